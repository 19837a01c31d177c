#include "Renderer/OpenCL/CLKernel.h"

#include "Renderer/OpenCL/OpenCLStatus.h"

namespace Renderer {

CLKernel::CLKernel(cl_program program, const std::string& name) {
    cl_int status = CL_SUCCESS;
    m_kernel = clCreateKernel(program, name.c_str(), &status);
    throwIfFailed(status, "Failed to create kernel!");
}

CLKernel::~CLKernel() {
    if (m_kernel) clReleaseKernel(m_kernel);
}

} // namespace Renderer
