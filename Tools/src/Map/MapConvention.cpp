#include "Map/MapConvention.h"

#include <fmt/format.h>

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

} // namespace Tools
