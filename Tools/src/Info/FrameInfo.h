#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "Chain/FramePlan.h"
#include "Core/FramePreparation.h"
#include "Report/Dimensions.h"

namespace Tools {

/// How the plug-in corrects one frame, or why it cannot.
struct FrameInfo {
    /// The result of undistorting the frame.
    struct Undistortion {
        PixelSize size;               ///< of the data window that the corrected picture gets
        float overscan = 0.0f;        ///< %, by which the half-diagonal grows of a picture that fills the format
        double deviation = 0.0;       ///< px; as FrameGeometry::deviation
        float imageRadius = 0.0f;     ///< mm, of the recorded frame's corner
        float correctedRadius = 0.0f; ///< mm, where that corner ends up
    };

    std::int64_t frame = 0;
    std::string file; ///< the picture; empty: a frame of a correction file
    std::optional<Core::FrameToCorrect> prepared;
    Core::FrameParameters parameters;
    std::optional<Undistortion> undistortion;
    std::string error;   ///< brief text; empty: the frame can be corrected
    std::string details; ///< lines that name the values involved, each ending in a line feed; may be empty
};

/// Lets the core prepare the frame that the preparation's data source stands for now, with the core's own texts when
/// that fails, and plans it for the distortion node (planFrame). Undistorting should be wanted; what
/// it takes to remove the shading is told too.
FrameInfo frameInfo(std::int64_t frame, Core::FramePreparation& preparation, const PictureShape& shape);

} // namespace Tools
