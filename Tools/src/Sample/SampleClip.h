#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "Report/Dimensions.h"

namespace Tools {

/// The lens of the sample clip: a published calibration, applied to a focal length.
///
/// Distortion. With distances from the image centre in units of the focal length, u in the ideal picture of a pinhole
/// and d in the recorded one, d = u · (1 + k1 u² + k2 u⁴) with k1 = -0.399431 and k2 = 0.188924: camera c0 of the
/// calibration published with the Extended CMU Seasons data set (its file intrinsics.txt). The model has no unit, so it
/// serves any focal length; tangential terms, which are a thousand times smaller there, are left out.
/// Shading. The natural fall-off of every lens, cos⁴ of the field angle: 1 / (1 + u²)².
class SampleLens {
public:
    /// In mm.
    explicit SampleLens(double focalLength);

    /// Distance in the ideal picture that is recorded at this distance; both mm, 0 to half the focal length.
    double idealDistance(double recordedDistance) const;

    /// The reverse.
    double recordedDistance(double idealDistance) const;

    /// Brightness at this recorded distance (mm) relative to the centre: 0 to 1.
    double illumination(double recordedDistance) const;

    double focalLength() const { return m_focalLength; }

private:
    double m_focalLength;
};

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

/// How far corrected frames of the sample clip may be from the clean reference; differences of pixel values.
struct SampleErrorBound {
    double displacement = 0.0;  ///< px by which the correction's fitted curves and rounded frame size move the picture
    double interpolation = 0.0; ///< error of interpolating between the plate's pixels
    double movement = 0.0;      ///< effect of the displacement where the picture is steepest
    double shading = 0.0;       ///< error of the fitted brightness curve
    double rounding = 0.0;      ///< plate, reference and result are stored as half floats
    double total = 0.0;         ///< sum of the last four

    /// Fills the total and returns it.
    double sum() { return total = interpolation + movement + shading + rounding; }
};

/// A made-up clip whose correction is known exactly: what a camera with SampleLens records of SamplePicture, the
/// picture itself as the reference, and the correction file.
///
/// The lens breathes: its focal length goes from 32.0 to 32.5 mm over the clip, so every frame has a record of its own.
/// The frames are numbered from 1001; the timecode starts at 01:00:00:00 at 24 frames per second.
class SampleClip {
public:
    /// Throws Failure (WrongUse) unless there are 1 to 100000 frames and each side has 64 to 16384 px.
    SampleClip(PixelSize size, std::int32_t frameCount);

    std::int32_t frameCount() const { return m_frameCount; }
    std::int32_t frameNumber(std::int32_t index) const { return 1001 + index; }

    /// The recorded frame, with distortion and shading: width × height × 3 floats (R, G, B), row by row from the top.
    std::vector<float> plate(std::int32_t index) const;

    /// The same frame as an ideal lens shows it, in the same layout.
    std::vector<float> clean(std::int32_t index) const;

    /// The correction file's text (version 3).
    std::string correctionFile() const;

    /// HH:MM:SS:FF of a frame.
    std::string timecode(std::int32_t index) const;
    /// The same as the word that picture files hold: binary-coded digits, no flags.
    std::uint32_t timecodeWord(std::int32_t index) const;

    /// For the worst frame. Derived in the README that the sample command writes.
    SampleErrorBound errorBound() const;

    /// Half the diagonal of the image area, mm; always the same, so that every size has the same distortion.
    static constexpr double imageRadius = 13.6317;
    /// Width of the image area in mm.
    double sensorWidth() const;
    double halfDiagonal() const; ///< px
    SampleLens lens(std::int32_t index) const;

private:
    template <typename Pixel>
    std::vector<float> render(Pixel pixel) const;
    std::vector<double> heights() const;
    SampleErrorBound errorBound(std::int32_t index) const;

    PixelSize m_size;
    std::int32_t m_frameCount;
    SamplePicture m_picture;
};

} // namespace Tools
