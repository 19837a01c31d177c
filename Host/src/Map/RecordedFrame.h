#pragma once

#include "Console/Dimensions.h"
#include "RecordingFormatDatabase/RecordingFormat.h"

class LensCorrection;

namespace Host {

/// The frame of a plate, as what is rendered of it is measured against it.
struct RecordedFrame {
    PixelSize format; ///< of the plate
    /// Half the diagonal in px, from corner to corner of the pixels, of what the lens threw on the recorded area: of
    /// the format, or of what remains when a part of the format is overscan.
    double halfDiagonal = 0.0;

    /// The whole format was recorded.
    explicit RecordedFrame(PixelSize format);

    /// What a validated node, its overscan set, has at its image input.
    explicit RecordedFrame(const LensCorrection& node);

    /// At which scale the lens's curve lies over the recorded picture.
    double millimetresPerPixel(const RecordingFormatDatabase::RecordingFormat& recordingFormat) const;

    /// The size of the node's box for a frame that it wants to render: as much on either side of the format.
    PixelSize box(PixelSize frame) const;
};

} // namespace Host
