#include "Lens/RecordedFrame.h"

#include "FrameSizing.h"

namespace Tools {

RecordedFrame::RecordedFrame(PixelSize format, std::optional<float> overscan) {
    FrameSizing::Size recorded{format.width, format.height};
    if (overscan) recorded = FrameSizing::withoutOverscan(recorded, *overscan);
    halfDiagonal = Tools::halfDiagonal(static_cast<double>(recorded.width), static_cast<double>(recorded.height));
}

double RecordedFrame::millimetresPerPixel(const RecordingFormatDatabase::RecordingFormat& recordingFormat) const {
    return static_cast<double>(recordingFormat.imageRadius) / halfDiagonal;
}

} // namespace Tools
