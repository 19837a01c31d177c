#pragma once

#include <cstddef>
#include <memory>

#include "DDImage/ImagePlane.h"

/// One to four channels of a plane as the core takes them: width × height × 4 floats over a given box, row by row from
/// the box's bottom row, without gaps.
///
/// Red, green, blue and alpha stand in their own lanes whatever the order of the plane's channels; other channels fill
/// the lanes in their order. Lanes without a channel and pixels outside the plane hold 0.
class PackedPlane {
public:
    /// Packs up to four components of the plane, starting with `firstComponent`. Throws std::bad_alloc.
    PackedPlane(const DD::Image::ImagePlane& plane, const DD::Image::Box& box, int firstComponent);

    const float* pixels() const { return m_pixels.get(); }

    /// Writes pixels of this layout back to the components they came from, where box and plane overlap. The plane's
    /// buffer must be writable.
    void unpack(const float* pixels, DD::Image::ImagePlane& plane) const;

    /// Whether the plane's buffer already has this layout over the box.
    static bool isPacked(const DD::Image::ImagePlane& plane, const DD::Image::Box& box);

private:
    static constexpr int c_laneCount = 4;

    DD::Image::Box m_box;
    int m_firstComponent;
    int m_componentCount;
    int m_lanes[c_laneCount]; ///< lane of each component
    std::unique_ptr<float[]> m_pixels;
};
