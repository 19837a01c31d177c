#include "Chain/ChainSettings.h"

#include <fmt/format.h>

#include <cmath>

#include "Frame.h"

namespace Tools {

std::string LensDataOptions::pixelAspectObjection(const Image::Frame& frame) const {
    // Files keep the ratio as a quotient or in single precision; a whole picture of 8192 px shows less than this.
    constexpr float rounding = 1e-4f;
    if (ignoresPixelAspect) return {};
    for (const Image::Part& part : frame.parts) {
        if (std::abs(part.pixelAspectRatio - 1.0f) <= rounding) continue;
        return fmt::format(
            "The pixels are not square (pixel aspect ratio {:g}), but the lens model is radial in square pixels. "
            "Resample the picture to square pixels first, or give --pixel-aspect ignore to correct it as it is.",
            part.pixelAspectRatio);
    }
    return {};
}

} // namespace Tools
