#pragma once

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

} // namespace Tools
