#include "Lens/FrameGeometry.h"

#include <cmath>

#include "FrameSizing.h"
#include "Report/Dimensions.h"

namespace Tools {

RecordedFrame::RecordedFrame(PixelSize format, std::optional<float> overscan) {
    FrameSizing::Size recorded{format.width, format.height};
    if (overscan) recorded = FrameSizing::withoutOverscan(recorded, *overscan);
    halfDiagonal = Tools::halfDiagonal(static_cast<double>(recorded.width), static_cast<double>(recorded.height));
}

double RecordedFrame::millimetresPerPixel(const RecordingFormatDatabase::RecordingFormat& recordingFormat) const {
    return static_cast<double>(recordingFormat.imageRadius) / halfDiagonal;
}

RadialSampling FrameGeometry::sampling(Geometry geometry) const {
    const RadialSampling rendered = RadialSampling::rendered(node);
    return geometry == Geometry::Node ? rendered : rendered.at(idealMillimetresPerPixel);
}

Place FrameGeometry::source(const RadialSampling& sampling, Place place) const {
    const Place c = centre();
    const double factor = sampling.factor(std::hypot(place.x - c.x, place.y - c.y));
    return {c.x + (place.x - c.x) * factor, c.y + (place.y - c.y) * factor};
}

Place FrameGeometry::centre() const {
    return {(static_cast<double>(format.minX) + format.maxX) / 2.0,
            (static_cast<double>(format.minY) + format.maxY) / 2.0};
}

double FrameGeometry::formatHalfDiagonal() const {
    return halfDiagonal(static_cast<double>(format.width()), static_cast<double>(format.height()));
}

double FrameGeometry::deviation() const { return nodeDeviation(node, idealMillimetresPerPixel); }

bool FrameGeometry::isSameMap(const FrameGeometry& other) const {
    return format == other.format && box == other.box && pixelAspectRatio == other.pixelAspectRatio &&
           sampling(Geometry::Node) == other.sampling(Geometry::Node) &&
           idealMillimetresPerPixel == other.idealMillimetresPerPixel;
}

} // namespace Tools
