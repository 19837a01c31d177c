#pragma once

#include <CL/cl.h>

#include <string>

namespace Renderer {

/// Sole owner of one kernel of a built program; released with the object.
class CLKernel {
public:
    /// Throws Exception "Failed to create kernel! (STATUS)".
    CLKernel(cl_program program, const std::string& name);
    ~CLKernel();
    CLKernel(const CLKernel&) = delete;
    CLKernel& operator=(const CLKernel&) = delete;

    operator cl_kernel() const { return m_kernel; }

private:
    cl_kernel m_kernel = nullptr;
};

} // namespace Renderer
