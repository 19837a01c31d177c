#pragma once

#include <array>
#include <cstdint>

namespace Tools {

/// The scene of the sample clip, as an ideal lens would show it: a gradient, a grid of straight lines, a family of
/// slanted ones, and a fine texture that moves from frame to frame. It extends over the whole plane.
///
/// Everything is a smooth function of the place with known limits on its derivatives, so one evaluation at a pixel's
/// centre is exact without any aliasing, and the error of interpolating between pixels can be stated.
class SamplePicture {
public:
    /// Spacing of the grid in px; at least 24, so that neighbouring lines do not touch.
    explicit SamplePicture(double gridSpacing);

    /// Red, green, blue at x px to the right of and y px below the centre; linear light, about 0.1 to 1.
    std::array<float, 3> color(double x, double y, std::int32_t frameIndex) const;

    /// Largest value of any channel anywhere; an upper limit, like the next two.
    static double maximum();
    /// Largest change of any channel per px in any direction.
    static double maximumGradient();
    /// Largest second derivative of any channel in any direction, per px².
    static double maximumCurvature();

private:
    double m_spacing;
};

} // namespace Tools
