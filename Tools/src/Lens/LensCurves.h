#pragma once

#include "Core/CorrectionPolynomials.h"
#include "CorrectionData/Content.h"

namespace Tools {

/// Whether the frames were measured alike, so that they have the same curves.
bool haveEqualValues(const CorrectionData::Frame& left, const CorrectionData::Frame& right);

/// One frame's curves as the plug-in fits and evaluates them, in single precision.
///
/// Heights are mm from the image centre. The recorded height is that in the plate; the corrected height is where the
/// undistorting render puts it: positive distortion moves it inward.
class LensCurves {
public:
    /// Throws CorrectionData::CoefficentCalculationFailedException when no curve passes through the points.
    explicit LensCurves(const CorrectionData::Frame& frame);

    const CorrectionData::Frame& frame() const { return m_frame; }
    const Core::Polynomial& shading() const { return m_shading; }
    const Core::DistortionPolynomials& distortion() const { return m_distortion; }

    float lastHeight() const; ///< largest measured height, mm

    double illuminationAt(float height) const; ///< %
    double distortionAt(float height) const;   ///< ‰ of the recorded height; at 0 the limit that the curve tends to
    double shiftAt(float height) const;        ///< mm from the corrected to the recorded height, positive outward
    double roundTripAt(float height) const;    ///< mm by which correcting and distorting again misses the height

    /// Largest distance of a fitted curve from the points that it was fitted to.
    double largestIlluminationResidual() const; ///< %
    double largestForwardResidual() const;      ///< mm, recorded to corrected height (P)
    double largestInverseResidual() const;      ///< mm, corrected to recorded height (Q)
    double largestRoundTrip(float end) const;   ///< mm, over the heights up to `end`

private:
    CorrectionData::Frame m_frame;
    Core::Polynomial m_shading;
    Core::DistortionPolynomials m_distortion;
};

} // namespace Tools
