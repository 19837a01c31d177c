#include "Map/MapPicture.h"

#include <fmt/format.h>

#include <cstring>

#include "ParallelFor.h"
#include "Report/Failure.h"

namespace Tools {
namespace {

struct Axis {
    double offset;  ///< added to the place in px
    double divisor; ///< px
};

Axis axis(MapConvention::Centre centre, std::int64_t length) {
    const double side = static_cast<double>(length);
    switch (centre) {
        case MapConvention::Centre::Half:
            return {0.5, side};
        case MapConvention::Centre::None:
            return {0.0, side};
        case MapConvention::Centre::Corner:
            break;
    }
    return {0.0, side - 1.0};
}

std::string text(const char* name, const Axis& axis) {
    return axis.offset == 0.0 ? fmt::format("{} / {}", name, axis.divisor)
                              : fmt::format("({} + {}) / {}", name, axis.offset, axis.divisor);
}

} // namespace

void MapConvention::check(const Image::Window& format) const {
    if (centre != Centre::Corner || (format.width() > 1 && format.height() > 1)) return;
    refuse(
        fmt::format("--centre corner divides by the side less 1 px, which is 0 for a picture of {} x {} px; "
                    "choose another.",
                    format.width(), format.height()));
}

std::pair<float, float> MapConvention::values(const Image::Window& format, Place source) const {
    const Axis across = axis(centre, format.width());
    const Axis down = axis(centre, format.height());
    const double u = (source.x - format.minX + across.offset) / across.divisor;
    const double v = (source.y - format.minY + down.offset) / down.divisor;
    return {static_cast<float>(u), static_cast<float>(origin == Origin::Top ? v : 1.0 - v)};
}

std::string MapConvention::formula(const Image::Window& format) const {
    const std::string u = text("sx", axis(centre, format.width()));
    const std::string v = (origin == Origin::Top ? "" : "1 - ") + text("sy", axis(centre, format.height()));
    switch (channels) {
        case Channels::Single:
            return fmt::format("R = {}, G = {}, B = 0, A = 1", u, v);
        case Channels::Twice:
            return fmt::format("R = {0}, G = {1}, B = {0}, A = {1}", u, v);
        case Channels::Both:
            break;
    }
    return fmt::format("R = {}, G = {}; B, A: the same for the opposite direction", u, v);
}

const char* MapConvention::originName() const { return origin == Origin::Top ? "top" : "bottom"; }

const char* MapConvention::centreName() const {
    return centre == Centre::Half ? "half" : centre == Centre::None ? "none" : "corner";
}

const char* MapConvention::channelsName() const {
    return channels == Channels::Single ? "single" : channels == Channels::Twice ? "twice" : "both";
}

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
