#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

#include "Frame.h"
#include "FrameReader.h"

namespace Image {

/// Bytes that do not describe a frame, or one beyond the limits.
class FrameMessageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// A frame without its pixels, and how many frames its file has, as bytes: how one process hands it to another. The
/// reading side trusts nothing: it checks every count against the bytes that are there and every size against the
/// limits before it allocates memory, and lays the planes out itself.
struct FrameMessage {
    /// The longest description of a frame; the reading side refuses longer ones.
    static constexpr std::uint64_t maxBytes = std::uint64_t{64} << 20;
    /// A movie of 115 hours with 24 frames a second.
    static constexpr std::int64_t maxFrameCount = 10'000'000;

    std::int64_t frameCount = 1;
    Frame frame; ///< its planes have no memory after reading

    std::string bytes() const { return bytesOf(frame, frameCount); }
    /// The bytes of such a message, whose frame may have pixels.
    static std::string bytesOf(const Frame& frame, std::int64_t frameCount);
    /// Throws FrameMessageError.
    static FrameMessage parse(std::string_view bytes, const Limits& limits);
};

} // namespace Image
