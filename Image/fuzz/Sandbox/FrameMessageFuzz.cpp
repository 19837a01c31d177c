// What a process that decodes answers, of any bytes: a frame within the limits that is told in the same bytes again, or
// the documented error; and no memory beyond what the bytes and the limits call for.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <new>
#include <string_view>

#include "Sandbox/FrameMessage.h"
#include "Support/Require.h"

namespace {

std::size_t largest = 0; ///< bytes of the largest allocation

void* allocateOrNull(std::size_t size) noexcept {
    largest = std::max(largest, size);
    return std::malloc(std::max<std::size_t>(size, 1));
}

void* allocate(std::size_t size) {
    if (void* const memory = allocateOrNull(size)) return memory;
    throw std::bad_alloc();
}

} // namespace

void* operator new(std::size_t size) { return allocate(size); }
void* operator new[](std::size_t size) { return allocate(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return allocateOrNull(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return allocateOrNull(size); }
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using Image::FrameMessage;
    constexpr Image::Limits limits{4096, 1 << 16, 64, 1 << 22};
    // A part takes some bytes more in memory than in the message, and lists grow by doubling.
    const std::size_t mostForBytes = 4096 + 32 * size;
    largest = 0;
    try {
        FrameMessage message = FrameMessage::parse({reinterpret_cast<const char*>(data), size}, limits);
        REQUIRE(largest <= mostForBytes);
        REQUIRE(message.frameCount >= 1 && message.frameCount <= FrameMessage::maxFrameCount);
        REQUIRE(!message.frame.parts.empty());
        std::size_t total = 0;
        for (Image::Part& part : message.frame.parts) {
            REQUIRE(!part.channels.empty() && part.channels.size() <= 64);
            part.allocatePixels();
            for (const Image::Channel& channel : part.channels) {
                REQUIRE(channel.plane < part.planes.size());
                REQUIRE(channel.component < part.planes[channel.plane].components);
            }
            for (const Image::Plane& plane : part.planes) {
                REQUIRE(plane.pixels.size() == plane.rowBytes() * plane.height);
                total += plane.pixels.size();
            }
        }
        REQUIRE(total <= 1 << 22);
        const std::string told = message.bytes();
        REQUIRE(told.size() == size && FrameMessage::parse(told, limits).bytes() == told);
    } catch (const Image::FrameMessageError&) {
        REQUIRE(largest <= mostForBytes);
    }
    return 0;
}
