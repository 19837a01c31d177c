#pragma once

#include <optional>
#include <string>

#include "Chain/LensDataOptions.h"
#include "Chain/ShadingLayers.h"

namespace Tools {

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
