#pragma once

#include <optional>
#include <string>

#include "Chain/ShadingLayers.h"
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

/// What the nodes are to do with a picture, and where they take its lens data from.
struct ChainSettings : LensDataOptions {
    enum class Distortion { None, Undistort, Distort };
    enum class Shading { None, Remove, Add };

    Distortion distortion = Distortion::None;
    Shading shading = Shading::None;
    ShadingLayers shadingLayers; ///< which channels the shading correction changes
    bool renderMap = false;      ///< the correction's map instead of the picture; only one correction is wanted then
    bool hasPlate = false;       ///< the lens data come from another clip than the pixels

    /// Colour space of the pixels, which are linear light without it; rawInputSpace: taken as they are.
    std::optional<std::string> inputSpace;
    std::string colourConfig; ///< OpenColorIO configuration with that space; empty: $OCIO, else the built-in one
    static constexpr const char* rawInputSpace = "raw";
};

} // namespace Tools
