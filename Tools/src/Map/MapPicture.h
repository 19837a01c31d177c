#pragma once

#include <optional>

#include "Frame.h"
#include "Map/MapConvention.h"

namespace Tools {

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
///     com.orvex.lenscorrect.version            "0.18.1"
Image::Frame mapPicture(const MapContent& content, const FrameGeometry& frame,
                        const std::optional<FrameGeometry>& opposite, unsigned int threads);

const char* name(Direction direction); ///< "undistort" or "redistort"
const char* name(Geometry geometry);   ///< "node" or "ideal"

} // namespace Tools
