#include "Renderer/OpenCL/CLMemory.h"

#include <string>

#include "Exception/Exception.h"

namespace Renderer {

CLMemory::CLMemory(cl_context context, cl_mem_flags flags, unsigned long size)
    : m_memory(clCreateBuffer(context, flags, size, nullptr, nullptr)) {
    if (!m_memory) throw Exception("Failed to allocate device memory! (" + std::to_string(size) + " bytes)");
}

CLMemory::~CLMemory() {
    if (m_memory) clReleaseMemObject(m_memory);
}

} // namespace Renderer
