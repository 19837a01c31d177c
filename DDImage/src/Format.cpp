#include "DDImage/Format.h"

namespace DD {
namespace Image {

Format::Format(int width, int height, double pixelAspect) : Format(width, height, 0, 0, width, height, pixelAspect) {}

Format::Format(int width, int height, int x, int y, int r, int t, double pixelAspect)
    : Box(x, y, r, t), m_width(width), m_height(height), m_pixelAspect(pixelAspect) {}

} // namespace Image
} // namespace DD
