#include "Map/MapPicture.h"

#include <fmt/format.h>

#include <cstring>

#include "ParallelFor.h"

namespace Tools {

namespace {

constexpr const char* prefix = "com.orvex.lenscorrect.";

const char* meaning(Geometry geometry) {
    return geometry == Geometry::Node
               ? "the half-diagonal of the rendered frame stands for the corrected picture's corner, as in the node"
               : "the recorded frame's half-diagonal stands for the recording format's image radius";
}

void describe(const MapContent& content, Image::Part& part) {
    const auto set = [&part](const char* key, const std::string& value) {
        part.setAttribute({std::string(prefix) + key, "string", value});
    };
    const MapConvention& convention = content.convention;
    set("map.direction", name(content.direction));
    set("map.geometry", name(content.geometry));
    set("map.origin", convention.originName());
    set("map.centre", convention.centreName());
    set("map.channels", convention.channelsName());
    set("map.formula", convention.formula(part.displayWindow));
    set("map.place",
        fmt::format("(sx, sy) is the position to sample in the source, in px from the centre of the top left "
                    "pixel of its display window, y downwards; values may lie outside 0 to 1; {}",
                    meaning(content.geometry)));
    set("version", ORVEX_VERSION);
}

} // namespace

Image::Frame mapPicture(const MapContent& content, const FrameGeometry& frame,
                        const std::optional<FrameGeometry>& opposite, unsigned int threads) {
    Image::Frame picture;
    picture.format = "exr";
    Image::Part& part = picture.parts.emplace_back();
    part.dataWindow = frame.box;
    part.displayWindow = frame.format;
    part.pixelAspectRatio = frame.pixelAspectRatio;
    part.compression = "zip";
    part.channels = Image::floatRgbaChannels();
    part.layOutPlanes();
    part.allocatePixels();
    for (const Image::Attribute& attribute : frame.identity) part.setAttribute(attribute);
    describe(content, part);

    const MapConvention& convention = content.convention;
    const RadialSampling sampling = frame.sampling(content.geometry);
    std::optional<RadialSampling> oppositeSampling;
    if (convention.channels == MapConvention::Channels::Both) {
        oppositeSampling = opposite.value().sampling(content.geometry);
    }
    Image::Plane& plane = part.planes.front();
    Image::parallelFor(threads, plane.height, [&](Image::WorkQueue& rows) {
        std::vector<float> values(plane.width * 4);
        std::size_t row = 0;
        while (rows.next(row)) {
            float* value = values.data();
            for (std::size_t column = 0; column < plane.width; ++column) {
                const Place place{static_cast<double>(frame.box.minX) + static_cast<double>(column),
                                  static_cast<double>(frame.box.minY) + static_cast<double>(row)};
                const auto [u, v] = convention.values(frame.format, frame.source(sampling, place));
                std::pair<float, float> others{0.0f, 1.0f};
                if (convention.channels == MapConvention::Channels::Twice) {
                    others = {u, v};
                } else if (oppositeSampling) {
                    others = convention.values(frame.format, opposite->source(*oppositeSampling, place));
                }
                *value++ = u;
                *value++ = v;
                *value++ = others.first;
                *value++ = others.second;
            }
            std::memcpy(plane.row(row), values.data(), values.size() * sizeof(float));
        }
    });
    return picture;
}

const char* name(Direction direction) { return direction == Direction::Undistort ? "undistort" : "redistort"; }

const char* name(Geometry geometry) { return geometry == Geometry::Node ? "node" : "ideal"; }

} // namespace Tools
