#pragma once

#include <cstdint>

#include "DDImage/Box.h"

/// The arithmetic by which the nodes size the frame that they render; single precision, and halves are rounded away
/// from zero. Code that needs a node's box in advance uses these functions.
///
/// Functions that round throw boost::math::rounding_error when a size comes out not finite, or beyond an int.
namespace FrameSizing {

/// Width and height in px.
struct Size {
    std::int64_t width = 0;
    std::int64_t height = 0;
};

inline Size sizeOf(const DD::Image::Box& box) { return {box.w(), box.h()}; }

/// The smallest frame with the format's aspect ratio, centred on it, that holds the box; smaller than the format if the
/// box does not reach its sides. Example: a format of 2048 × 1152 whose box overhangs by 64 px left and right gives
/// 2176 × 1224.
Size frameAround(const DD::Image::Box& box, const DD::Image::Box& format);

/// The box of a frame that is centred on the format in whole pixels, with equal margins on opposite sides.
DD::Image::Box boxCenteredOn(Size format, Size frame);

/// What remains of a format of which this percentage is overscan.
Size withoutOverscan(Size format, float percent);

/// By how many percent the rendered frame's half-diagonal, between the centres of the corner pixels, exceeds the
/// recorded one's.
float overscan(Size rendered, Size recorded);

} // namespace FrameSizing
