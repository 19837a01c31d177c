#pragma once

#include <CL/cl.h>

namespace Renderer {

/// Sole owner of a device buffer; released with the object.
class CLMemory {
public:
    /// `size` is in bytes. Throws Exception "Failed to allocate device memory! (SIZE bytes)".
    CLMemory(cl_context context, cl_mem_flags flags, unsigned long size);
    ~CLMemory();
    CLMemory(const CLMemory&) = delete;
    CLMemory& operator=(const CLMemory&) = delete;

    operator cl_mem() const { return m_memory; }

private:
    cl_mem m_memory = nullptr;
};

} // namespace Renderer
