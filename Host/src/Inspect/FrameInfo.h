#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "Console/Dimensions.h"
#include "Core/FramePreparation.h"
#include "Map/RecordedFrame.h"

namespace Host {

/// How the plug-in corrects one frame, or why it cannot.
struct FrameInfo {
    /// What undistorting the frame comes to.
    struct Undistortion {
        PixelSize size;               ///< that holds the whole corrected picture
        float overscan = 0.0f;        ///< %, by which that frame's half-diagonal exceeds the recorded frame's
        double deviation = 0.0;       ///< px; as FrameGeometry::deviation
        float imageRadius = 0.0f;     ///< mm, of the recorded frame's corner
        float correctedRadius = 0.0f; ///< mm, where that corner comes to lie
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
/// that fails. Both corrections should be wanted, undistorting; the data source tells the size of the frame before the
/// core enlarges it, `recorded` what it is a frame of.
FrameInfo frameInfo(std::int64_t frame, Core::FramePreparation& preparation, const RecordedFrame& recorded);

} // namespace Host
