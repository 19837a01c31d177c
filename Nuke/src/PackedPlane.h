#pragma once

#include <cstddef>
#include <memory>

#include "DDImage/ImagePlane.h"

/// One to four channels of a plane as the core takes them: width × height × 4 floats over a given box, row by row from
/// the box's bottom row, without gaps.
///
/// Red, green, blue and alpha keep their own lanes whatever the order of the plane's channels; other channels take the
/// first of the three colour lanes that is free, since the core does not shade the fourth, alpha's. Lanes without a
/// channel and pixels outside the plane hold 0.
class PackedPlane {
public:
    /// Packs the components of the plane from `firstComponent` on, up to the first that finds no lane: at least one, up
    /// to four. Throws std::bad_alloc.
    PackedPlane(const DD::Image::ImagePlane& plane, const DD::Image::Box& box, int firstComponent);

    const float* pixels() const { return m_pixels.get(); }
    int componentCount() const { return m_componentCount; }

    /// Writes pixels of this layout back to the components they came from, where box and plane overlap. The plane's
    /// buffer must be writable.
    void unpack(const float* pixels, DD::Image::ImagePlane& plane) const;

    /// Whether the plane's buffer already has this layout over the box.
    static bool isPacked(const DD::Image::ImagePlane& plane, const DD::Image::Box& box);

private:
    DD::Image::Box m_box;
    int m_firstComponent;
    int m_componentCount;
    int m_lanes[4]; ///< lane of each component
    std::unique_ptr<float[]> m_pixels;
};
