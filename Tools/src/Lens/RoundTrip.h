#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "Lens/LensGeometry.h"
#include "Report/Dimensions.h"

namespace Tools {

/// How exactly undistorting a frame and distorting the result again restores it. Errors are the largest ones over the
/// recorded frame, in px of its format.
struct RoundTrip {
    std::int32_t frame = 0;
    std::string file; ///< the picture; empty: a frame of a correction file
    PixelSize format;
    Image::Window undistorted; ///< the data windows that the pictures get
    Image::Window redistorted;
    double imageRadius = 0.0; ///< mm, of the recorded frame's corner
    double lastHeight = 0.0;  ///< mm, the outermost measured one; beyond it the curves are a guess

    double analytic = 0.0;            ///< Q(P(r)) − r of the fitted curves
    double maps = 0.0;                ///< of a position that goes through both maps, as the nodes render them
    std::optional<double> rendered;   ///< of positions that are rendered as pixel values through both nodes
    double toCorrectedResidual = 0.0; ///< by which the fitted curves miss the measured points
    double toRecordedResidual = 0.0;
    double deviation = 0.0; ///< between the node's undistorted picture and the ideal one

    /// The largest round-trip error; not a number if one is not.
    double largestError() const;
};

/// Measures a frame; with `isRendered` through the renderers too. Throws Failure (Correction), Image::ImageError.
RoundTrip roundTrip(LensGeometry& lens, std::int32_t frame, bool isRendered);

} // namespace Tools
