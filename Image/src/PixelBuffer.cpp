#include "PixelBuffer.h"

#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>
#include <utility>

namespace Image {

namespace {
constexpr std::size_t alignment = 64;
}

PixelBuffer::PixelBuffer(const PixelBuffer& other) {
    resize(other.m_size);
    if (m_size != 0) std::memcpy(m_data, other.m_data, m_size);
}

PixelBuffer::PixelBuffer(PixelBuffer&& other) noexcept
    : m_data(std::exchange(other.m_data, nullptr)),
      m_size(std::exchange(other.m_size, 0)),
      m_capacity(std::exchange(other.m_capacity, 0)),
      m_isOwn(std::exchange(other.m_isOwn, true)) {}

PixelBuffer& PixelBuffer::operator=(PixelBuffer other) noexcept {
    std::swap(m_data, other.m_data);
    std::swap(m_size, other.m_size);
    std::swap(m_capacity, other.m_capacity);
    std::swap(m_isOwn, other.m_isOwn);
    return *this;
}

PixelBuffer::~PixelBuffer() {
    if (m_isOwn) std::free(m_data);
}

void PixelBuffer::resize(std::size_t bytes) {
    if (bytes > m_capacity) {
        if (m_isOwn) std::free(m_data);
        m_isOwn = true;
        m_data = nullptr;
        m_size = m_capacity = 0;
        if (bytes > std::numeric_limits<std::size_t>::max() - alignment) throw std::bad_alloc();
        const std::size_t rounded = (bytes + alignment - 1) / alignment * alignment;
        m_data = static_cast<std::uint8_t*>(std::aligned_alloc(alignment, rounded));
        if (m_data == nullptr) throw std::bad_alloc();
        m_capacity = rounded;
    }
    m_size = bytes;
}

} // namespace Image
