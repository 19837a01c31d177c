#pragma once

#include <optional>

#include "Console/Dimensions.h"
#include "RecordingFormatDatabase/RecordingFormat.h"

namespace Host {

/// The frame of a plate, as what is rendered of it is measured against it.
struct RecordedFrame {
    /// Half the diagonal in px, from corner to corner of the pixels, of what the lens threw on the recorded area: of
    /// the format, or of what remains when so many percent of the format are overscan.
    double halfDiagonal = 0.0;

    explicit RecordedFrame(PixelSize format, std::optional<float> overscan = std::nullopt);

    /// At which scale the lens's curve lies over the recorded picture.
    double millimetresPerPixel(const RecordingFormatDatabase::RecordingFormat& recordingFormat) const;
};

} // namespace Host
