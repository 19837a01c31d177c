#pragma once

#include <optional>
#include <string>

#include "Report/Dimensions.h"

namespace Image {
struct Frame;
}

namespace Tools {

/// Settings for a clip's lens data and frames; what is not set is worked out.
struct LensDataOptions {
    std::optional<std::string> correctionFile; ///< instead of the one found near the clip
    std::optional<MillimetreSize> imageArea;   ///< both or neither of these two: a manual recording format
    std::optional<PixelSize> clipResolution;
    std::optional<float> overscan;   ///< percent, inside the format; without it the data window is the overscan
    bool ignoresPixelAspect = false; ///< correct pictures whose pixels are not square as if they were

    /// Why the picture does not fit the lens's model, which is radial in square pixels; empty: it does.
    std::string pixelAspectObjection(const Image::Frame& frame) const;
};

} // namespace Tools
