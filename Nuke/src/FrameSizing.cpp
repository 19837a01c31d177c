#include "FrameSizing.h"

#include <algorithm>
#include <cmath>

#include "Rounding.h"

namespace FrameSizing {
namespace {

/// Distance in px from the image centre to the centre of a corner pixel.
float halfDiagonal(Size size) {
    const float x = static_cast<float>(size.width) * 0.5f - 0.5f;
    const float y = static_cast<float>(size.height) * 0.5f - 0.5f;
    return std::sqrt(x * x + y * y);
}

} // namespace

Size frameAround(const DD::Image::Box& box, const DD::Image::Box& format) {
    // In 64 bits, since a box may reach far outside its format.
    const auto distance = [](int from, int to) { return std::int64_t{to} - from; };
    const std::int64_t marginX = std::max(distance(box.x(), format.x()), distance(format.r(), box.r()));
    const std::int64_t marginY = std::max(distance(box.y(), format.y()), distance(format.t(), box.t()));
    if (marginX == 0 && marginY == 0) return sizeOf(format);
    const float aspect = static_cast<float>(format.w()) / static_cast<float>(format.h());
    const std::int64_t widthForHeight = roundToInteger(static_cast<float>(format.h() + 2 * marginY) * aspect);
    const std::int64_t width = std::max(format.w() + 2 * marginX, widthForHeight);
    return {width, roundToInteger(static_cast<float>(width) / aspect)};
}

DD::Image::Box boxCenteredOn(Size format, Size frame) {
    const int width = static_cast<int>(format.width);
    const int height = static_cast<int>(format.height);
    const int dx = roundToInteger((static_cast<float>(frame.width) - static_cast<float>(format.width)) * 0.5f);
    const int dy = roundToInteger((static_cast<float>(frame.height) - static_cast<float>(format.height)) * 0.5f);
    return {-dx, -dy, width + dx, height + dy};
}

Size withoutOverscan(Size format, float percent) {
    const float factor = 1.0f / (percent / 100.0f + 1.0f);
    return {roundToInteger(static_cast<float>(format.width) * factor),
            roundToInteger(static_cast<float>(format.height) * factor)};
}

float overscan(Size rendered, Size recorded) {
    return (halfDiagonal(rendered) - halfDiagonal(recorded)) / halfDiagonal(recorded) * 100.0f;
}

} // namespace FrameSizing
