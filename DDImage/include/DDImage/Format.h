#pragma once

#include "DDImage/Box.h"

namespace DD {
namespace Image {

/// The display window of an image. width() × height() is the whole file; the box, w() × h(), is the area in use.
class Format : public Box {
public:
    Format() : Format(1, 1) {}
    Format(int width, int height, double pixelAspect = 1);
    Format(int width, int height, int x, int y, int r, int t, double pixelAspect = 1);

    int width() const { return m_width; }
    int height() const { return m_height; }
    double pixel_aspect() const { return m_pixelAspect; }

private:
    int m_width;
    int m_height;
    double m_pixelAspect;
};

} // namespace Image
} // namespace DD
