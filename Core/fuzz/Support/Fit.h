#pragma once

#include <cmath>

#include "Core/CorrectionPolynomials.h"
#include "CorrectionData/Calculations/Calculations.h"
#include "Support/Require.h"

namespace Support {

inline void requireFinite(const Core::Polynomial& polynomial) {
    for (const float coefficient : polynomial.coefficients) REQUIRE(std::isfinite(coefficient));
}

/// Fits a record in every way the facade does: finite coefficients, or the documented error.
inline void fit(const CorrectionData::Frame& frame) {
    try {
        requireFinite(Core::shadingPolynomial(frame));
    } catch (const CorrectionData::CoefficentCalculationFailedException&) {
    }
    try {
        const Core::DistortionPolynomials polynomials = Core::distortionPolynomials(frame);
        requireFinite(polynomials.distorted);
        requireFinite(polynomials.undistorted);
    } catch (const CorrectionData::CoefficentCalculationFailedException&) {
    }
}

} // namespace Support
