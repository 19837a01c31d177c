#pragma once

#include <array>
#include <vector>

#include "CorrectionData/Content.h"

namespace Core {

/// c0 + c1·x + … + c6·x⁶ in single precision, the form that the kernels evaluate.
struct Polynomial {
    std::array<float, 7> coefficients{};

    float at(float x) const;
};

/// A frame's distortion in both directions, in mm on the sensor.
struct DistortionPolynomials {
    Polynomial distorted;   ///< height → distorted height, fitted at the measured heights
    Polynomial undistorted; ///< distorted height → height, fitted at the distorted heights
};

/// Relative illumination in % over the image height in mm. Throws as distortionPolynomials does.
Polynomial shadingPolynomial(const CorrectionData::Frame& frame);

/// Throws CorrectionData::CoefficentCalculationFailedException when no polynomial passes through the points, also when
/// the record has unequal counts of heights and values.
DistortionPolynomials distortionPolynomials(const CorrectionData::Frame& frame);

/// Where each measured height is imaged: height × (1 − radial distortion ÷ 1000), mm. Throws as
/// distortionPolynomials does for unequal counts.
std::vector<float> distortedHeights(const CorrectionData::Frame& frame);

} // namespace Core
