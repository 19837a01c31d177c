#pragma once

#include <CL/cl.h>

namespace Renderer {

/// Sole owner of an OpenCL context on one device; released with the object.
class CLContext {
public:
    /// Throws Exception "Failed to create context! (STATUS)".
    explicit CLContext(cl_device_id device);
    ~CLContext();
    CLContext(const CLContext&) = delete;
    CLContext& operator=(const CLContext&) = delete;

    operator cl_context() const { return m_context; }

private:
    cl_context m_context = nullptr;
};

} // namespace Renderer
