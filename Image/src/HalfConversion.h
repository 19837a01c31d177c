#pragma once

#include <cstddef>
#include <cstdint>

namespace Image {

/// n half floats (their 16 bits) to floats: exact. Uses the processor's own instructions where it has them.
void halfToFloat(const std::uint16_t* halfs, float* floats, std::size_t n);

/// The same for floats that are not read again soon, past the processor's caches: memory that is larger than they are
/// is written in half the time.
void halfToDistantFloat(const std::uint16_t* halfs, float* floats, std::size_t n);

/// n floats to half floats, rounded to nearest even; beyond 65504 (after rounding) infinity; NaN stays NaN.
void floatToHalf(const float* floats, std::uint16_t* halfs, std::size_t n);

} // namespace Image
