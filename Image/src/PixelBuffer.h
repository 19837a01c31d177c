#pragma once

#include <cstddef>
#include <cstdint>

namespace Image {

/// Memory for pixels: 64-byte aligned, not initialised, and kept when it is resized to no more than it has held before,
/// so that a buffer used for frame after frame pays its page faults once.
class PixelBuffer {
public:
    PixelBuffer() = default;
    /// Borrows memory, which must outlive it; beyond `bytes` it allocates its own.
    PixelBuffer(std::uint8_t* memory, std::size_t bytes)
        : m_data(memory), m_size(bytes), m_capacity(bytes), m_isOwn(false) {}
    PixelBuffer(const PixelBuffer& other);
    PixelBuffer(PixelBuffer&& other) noexcept;
    PixelBuffer& operator=(PixelBuffer other) noexcept;
    ~PixelBuffer();

    /// Makes size() == bytes. The content is kept if the size does not grow, and undefined otherwise. Throws
    /// std::bad_alloc; the buffer is then empty.
    void resize(std::size_t bytes);

    std::size_t size() const { return m_size; }
    std::uint8_t* data() { return m_data; }
    const std::uint8_t* data() const { return m_data; }

private:
    std::uint8_t* m_data = nullptr;
    std::size_t m_size = 0;
    std::size_t m_capacity = 0;
    bool m_isOwn = true;
};

} // namespace Image
