#pragma once

#include <cstdint>
#include <string>

namespace Tools {

/// Width and height in px.
struct PixelSize {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    bool operator==(const PixelSize&) const = default;
};

/// Width and height in mm.
struct MillimetreSize {
    float width = 0.0f;
    float height = 0.0f;
    bool operator==(const MillimetreSize&) const = default;
};

/// Half a frame's diagonal, from corner to corner, in the unit of its sides: what a lens's image radius stands for.
double halfDiagonal(double width, double height);

/// Reads "1920x1080", each side 1 to 65536. Throws Failure (WrongUse) naming option and text.
PixelSize parsePixelSize(const std::string& option, const std::string& text);

/// Reads "23.76x13.37", each side more than 0 and at most 1000. Throws Failure (WrongUse) naming option and text.
MillimetreSize parseMillimetreSize(const std::string& option, const std::string& text);

/// Bytes in a text such as "8G", "512M", "1.5 GiB", "65536" or "64k"; units are powers of 1024, letter case is free.
/// Throws Failure (WrongUse) naming the text: not a number, an unknown unit, 0, or too large for 63 bits.
std::uint64_t parseMemorySize(const std::string& text);

/// Text for people: "1.5 GiB", "512 MiB", "100 bytes".
std::string memorySizeText(std::uint64_t bytes);

} // namespace Tools
