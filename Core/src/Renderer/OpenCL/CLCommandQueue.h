#pragma once

#include <CL/cl.h>

namespace Renderer {

/// Sole owner of an in-order command queue without profiling; released with the object.
class CLCommandQueue {
public:
    /// Throws Exception "Failed to create command queue! (STATUS)".
    CLCommandQueue(cl_device_id device, cl_context context);
    ~CLCommandQueue();
    CLCommandQueue(const CLCommandQueue&) = delete;
    CLCommandQueue& operator=(const CLCommandQueue&) = delete;

    operator cl_command_queue() const { return m_queue; }

private:
    cl_command_queue m_queue = nullptr;
};

} // namespace Renderer
