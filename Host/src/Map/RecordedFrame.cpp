#include "Map/RecordedFrame.h"

#include <cmath>

#include "LensCorrection.h"

namespace Host {

namespace {

double halfDiagonalOf(double width, double height) { return std::hypot(width, height) / 2.0; }

PixelSize formatOf(const LensCorrection& node) {
    const DD::Image::Format& format = node.format();
    return {static_cast<std::uint32_t>(format.w()), static_cast<std::uint32_t>(format.h())};
}

std::uint32_t centred(std::uint32_t frame, std::uint32_t format) {
    const double margin = std::round((static_cast<double>(frame) - format) * 0.5);
    return static_cast<std::uint32_t>(format + 2 * static_cast<std::int64_t>(margin));
}

} // namespace

RecordedFrame::RecordedFrame(PixelSize formatSize)
    : format(formatSize), halfDiagonal(halfDiagonalOf(format.width, format.height)) {}

RecordedFrame::RecordedFrame(const LensCorrection& node) : RecordedFrame(formatOf(node)) {
    if (node.overscanLocation() != LensCorrection::Format) return;
    const double factor = 1.0 / (static_cast<double>(node.overscanAmount()) / 100.0 + 1.0);
    halfDiagonal = halfDiagonalOf(std::round(format.width * factor), std::round(format.height * factor));
}

double RecordedFrame::millimetresPerPixel(const RecordingFormatDatabase::RecordingFormat& recordingFormat) const {
    return static_cast<double>(recordingFormat.imageRadius) / halfDiagonal;
}

PixelSize RecordedFrame::box(PixelSize frame) const {
    return {centred(frame.width, format.width), centred(frame.height, format.height)};
}

} // namespace Host
