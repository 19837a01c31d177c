#pragma once

#include <cstddef>
#include <cstdint>

namespace Image {

/// Rows of `components` (1 … 4) channels of 2 or 4 bytes a sample: n samples each in rows of their own, against pixels
/// in which they lie side by side.
void interleaveRow(const std::uint8_t* const* channels, std::size_t components, std::size_t bytesPerSample,
                   std::uint8_t* pixels, std::size_t n);
void deinterleaveRow(const std::uint8_t* pixels, std::size_t components, std::size_t bytesPerSample,
                     std::uint8_t* const* channels, std::size_t n);

} // namespace Image
