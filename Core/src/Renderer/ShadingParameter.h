#pragma once

#include <cstdint>

namespace Renderer {

/// The shading renderer's parameters for one frame.
struct ShadingParameter {
    std::uint32_t currentWidth = 0;   ///< px, of the input and the output
    std::uint32_t currentHeight = 0;  ///< px
    std::uint32_t originalWidth = 0;  ///< px, of the frame as recorded; not used
    std::uint32_t originalHeight = 0; ///< px
    bool renderMap = false;           ///< render the multiply map instead of the corrected image
    float imageRadius = 0.0f;         ///< mm, of the sensor's image area, at half the frame's diagonal
    /// Relative illumination in % at distance d mm from the centre: a0 + a1·d + … + a6·d⁶.
    float a0 = 0.0f, a1 = 0.0f, a2 = 0.0f, a3 = 0.0f, a4 = 0.0f, a5 = 0.0f, a6 = 0.0f;
    std::uint8_t reverse = 0; ///< 0: divide by the illumination (remove shading); else multiply by it (add shading)
    float gamma = 1.0f;       ///< exponent that makes the pixel values linear; greater than 0
};

} // namespace Renderer
