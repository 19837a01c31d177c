#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "Console/Dimensions.h"
#include "Core/FramePreparation.h"

namespace Host {

/// How the plug-in corrects one frame, or why it cannot.
struct FrameInfo {
    /// What undistorting the frame comes to.
    struct Undistortion {
        PixelSize size;               ///< that holds the whole corrected picture
        float overscan = 0.0f;        ///< %, by which that frame's half-diagonal exceeds the recorded frame's
        double deviation = 0.0;       ///< px; see undistortionDeviation
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
/// that fails. Both corrections should be wanted, undistorting.
FrameInfo frameInfo(std::int64_t frame, Core::FramePreparation& preparation);

/// Largest distance in px between where the plug-in's undistorting render samples the plate and where it ideally would.
///
/// The render's half-diagonal stands for the corrected picture's corner. But a frame is never made smaller than it was
/// (and grows to hold the edges' middles), so where the corrected picture's corner lies within the rendered frame, the
/// lens is evaluated too near the centre everywhere. Throws what sizing the frame throws.
double undistortionDeviation(const Renderer::DistortionParameter& parameter);

} // namespace Host
