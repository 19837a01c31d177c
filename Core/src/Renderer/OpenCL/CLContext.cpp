#include "Renderer/OpenCL/CLContext.h"

#include "Renderer/OpenCL/OpenCLStatus.h"

namespace Renderer {

CLContext::CLContext(cl_device_id device) {
    cl_int status = CL_SUCCESS;
    m_context = clCreateContext(nullptr, 1, &device, nullptr, nullptr, &status);
    throwIfFailed(status, "Failed to create context!");
}

CLContext::~CLContext() {
    if (m_context) clReleaseContext(m_context);
}

} // namespace Renderer
