#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Frame.h"
#include "Lens/FrameGeometry.h"

namespace Tools {

/// How a map encodes a position (sx, sy) of a source picture of W × H px: px from the centre of its top left pixel, y
/// downwards. Values are relative to the picture's display window, however large map and box are, and are never
/// clamped.
///
/// | Centre | across         | down           |                                                   |
/// |--------|----------------|----------------|---------------------------------------------------|
/// | Half   | (sx + 0.5) ÷ W | (sy + 0.5) ÷ H | 0 and 1 are the outer edges of the picture        |
/// | None   | sx ÷ W         | sy ÷ H         | 0 is the centre of the first pixel, 1 beyond it   |
/// | Corner | sx ÷ (W − 1)   | sy ÷ (H − 1)   | 0 and 1 are the centres of first and last pixel   |
///
/// u is "across"; v is "down" for Origin::Top and 1 − "down" for Origin::Bottom.
struct MapConvention {
    enum class Origin { Bottom, Top };
    enum class Centre { Half, None, Corner };
    enum class Channels {
        Single, ///< R = u, G = v, B = 0, A = 1
        Twice,  ///< R = u, G = v, B = u, A = v
        Both    ///< R = u, G = v; B, A: u, v of the opposite direction
    };

    Origin origin = Origin::Bottom;
    Centre centre = Centre::Half;
    Channels channels = Channels::Single;

    /// Throws Failure (WrongUse) when Centre::Corner divides by the 0 of a side of 1 px.
    void check(const Image::Window& format) const;

    std::pair<float, float> values(const Image::Window& format, Place source) const;

    /// "R = (sx + 0.5) / 1920, G = 1 - (sy + 0.5) / 1080, B = 0, A = 1"
    std::string formula(const Image::Window& format) const;

    const char* originName() const;
    const char* centreName() const;
    const char* channelsName() const;
};

/// What a map picture shows.
struct MapContent {
    Direction direction = Direction::Undistort;
    Geometry geometry = Geometry::Node;
    MapConvention convention;
};

/// The displacement map of a frame: 32-bit float R, G, B, A, ZIP; data window = FrameGeometry::box, display window =
/// the format. `opposite` is the geometry of the other direction, with the same format; needed for
/// MapConvention::Channels::Both only. `threads` compute.
///
/// The frame's identity is kept in the clip's own attributes, the convention in text attributes:
///
///     com.orvex.lenscorrect.map.direction      "undistort" or "redistort"
///     com.orvex.lenscorrect.map.geometry       "node" or "ideal"
///     com.orvex.lenscorrect.map.origin         "bottom" or "top"
///     com.orvex.lenscorrect.map.centre         "half", "none" or "corner"
///     com.orvex.lenscorrect.map.channels       "single", "twice" or "both"
///     com.orvex.lenscorrect.map.formula        as MapConvention::formula
///     com.orvex.lenscorrect.map.place          what (sx, sy) and the geometry mean, in a sentence
///     com.orvex.lenscorrect.version            the version of lenscorrect
Image::Frame mapPicture(const MapContent& content, const FrameGeometry& frame,
                        const std::optional<FrameGeometry>& opposite, unsigned int threads);

const char* name(Direction direction); ///< "undistort" or "redistort"
const char* name(Geometry geometry);   ///< "node" or "ideal"

} // namespace Tools
