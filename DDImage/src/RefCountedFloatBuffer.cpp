#include "DDImage/RefCountedFloatBuffer.h"

#include <atomic>
#include <cstdlib>
#include <new>
#include <utility>

namespace DD {
namespace Image {

namespace {

std::size_t bytesOf(const Box& box, int nComps) {
    return static_cast<std::size_t>(box.w()) * static_cast<std::size_t>(box.h()) * static_cast<std::size_t>(nComps) *
           sizeof(float);
}

float* required(void* memory) {
    if (!memory) throw std::bad_alloc();
    return static_cast<float*>(memory);
}

} // namespace

struct RefCountedFloatBuffer::Block {
    float* floats;
    std::size_t bytes;
    std::atomic<int> users{1};
};

RefCountedFloatBuffer::RefCountedFloatBuffer(const RefCountedFloatBuffer& other) : m_block(other.m_block) {
    if (m_block) m_block->users.fetch_add(1, std::memory_order_relaxed);
}

RefCountedFloatBuffer& RefCountedFloatBuffer::operator=(const RefCountedFloatBuffer& other) {
    return *this = RefCountedFloatBuffer(other);
}

RefCountedFloatBuffer::RefCountedFloatBuffer(RefCountedFloatBuffer&& other) noexcept
    : m_block(std::exchange(other.m_block, nullptr)) {}

RefCountedFloatBuffer& RefCountedFloatBuffer::operator=(RefCountedFloatBuffer&& other) noexcept {
    std::swap(m_block, other.m_block);
    return *this;
}

RefCountedFloatBuffer RefCountedFloatBuffer::allocate(const Box& box, int nComps, int, int, int) {
    const std::size_t bytes = bytesOf(box, nComps);
    RefCountedFloatBuffer buffer;
    buffer.m_block = new Block{nullptr, bytes};
    buffer.m_block->floats = required(std::calloc(bytes, 1));
    return buffer;
}

RefCountedFloatBuffer RefCountedFloatBuffer::allocateUninitialised(const Box& box, int nComps) {
    const std::size_t bytes = bytesOf(box, nComps);
    RefCountedFloatBuffer buffer;
    buffer.m_block = new Block{nullptr, bytes};
    buffer.m_block->floats = required(std::malloc(bytes));
    return buffer;
}

std::size_t RefCountedFloatBuffer::usage() const { return m_block ? m_block->bytes : 0; }

// Acquire: who finds itself alone may write, and then follows what earlier users read.
int RefCountedFloatBuffer::refCount() const { return m_block ? m_block->users.load(std::memory_order_acquire) : 0; }

void RefCountedFloatBuffer::reset() {
    if (m_block && m_block->users.fetch_sub(1, std::memory_order_acq_rel) == 1) {
        std::free(m_block->floats);
        delete m_block;
    }
    m_block = nullptr;
}

float* RefCountedFloatBuffer::data() const { return m_block ? m_block->floats : nullptr; }

} // namespace Image
} // namespace DD
