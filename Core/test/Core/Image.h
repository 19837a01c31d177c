#pragma once

#include <cstdint>
#include <vector>

namespace Support {

using Image = std::vector<float>; ///< RGBA, row by row

/// Of the values 0 to 1, the same for the same seed.
inline Image noise(std::uint32_t width, std::uint32_t height, std::uint32_t seed) {
    Image image(std::size_t{width} * height * 4);
    std::uint32_t state = seed * 2654435761u + 1;
    for (float& value : image) {
        state = state * 1664525u + 1013904223u;
        value = static_cast<float>(state >> 8) / 16777216.0f;
    }
    return image;
}

inline unsigned long bytes(const Image& image) { return image.size() * sizeof(float); }

} // namespace Support
