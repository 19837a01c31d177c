#pragma once

#include <optional>

#include "RecordingFormatDatabase/RecordingFormat.h"
#include "Report/Dimensions.h"

namespace Tools {

/// The recorded frame of a plate, against which its renderings are measured.
struct RecordedFrame {
    /// Half the diagonal in px, from corner to corner of the pixels, of what the lens projected onto the recorded area:
    /// of the format, or of what remains when this percentage of the format is overscan.
    double halfDiagonal = 0.0;

    explicit RecordedFrame(PixelSize format, std::optional<float> overscan = std::nullopt);

    /// The scale between the lens's curve and the recorded picture.
    double millimetresPerPixel(const RecordingFormatDatabase::RecordingFormat& recordingFormat) const;
};

} // namespace Tools
