#include "Renderer/OpenCL/CLCommandQueue.h"

#include "Renderer/OpenCL/OpenCLStatus.h"

namespace Renderer {

CLCommandQueue::CLCommandQueue(cl_device_id device, cl_context context) {
    cl_int status = CL_SUCCESS;
    m_queue = clCreateCommandQueue(context, device, 0, &status);
    throwIfFailed(status, "Failed to create command queue!");
}

CLCommandQueue::~CLCommandQueue() {
    if (m_queue) clReleaseCommandQueue(m_queue);
}

} // namespace Renderer
