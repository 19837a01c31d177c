#pragma once

#include <cstdint>

namespace Renderer {

/// The distortion renderer's parameters for one frame.
///
/// "Destination" is the rendered frame, "source" the frame it is rendered from; distances are measured from the centre
/// of the sensor's image area, in mm. To remove distortion the destination is the corrected picture and the source the
/// recorded one; to apply it, the other way round.
struct DistortionParameter {
    std::uint32_t currentWidth = 0;   ///< px, of the input and the output
    std::uint32_t currentHeight = 0;  ///< px
    std::uint32_t originalWidth = 0;  ///< px, of the frame as recorded; only the ratio to the height matters
    std::uint32_t originalHeight = 0; ///< px
    bool renderMap = false;           ///< render the map instead of the corrected image
    float imageRadius = 0.0f;         ///< mm, half the diagonal of the destination; greater than 0
    float frameImageRadius = 0.0f;    ///< mm, half the diagonal of the source; greater than 0
    /// Polynomial from a distance in the destination to the distance in the source: a0 + a1·d + … + a6·d⁶.
    float a0 = 0.0f, a1 = 0.0f, a2 = 0.0f, a3 = 0.0f, a4 = 0.0f, a5 = 0.0f, a6 = 0.0f;
    /// Polynomial from a distance in the source to the distance in the destination; sizes the frame.
    float b0 = 0.0f, b1 = 0.0f, b2 = 0.0f, b3 = 0.0f, b4 = 0.0f, b5 = 0.0f, b6 = 0.0f;
};

} // namespace Renderer
