#include "Core/CorrectionPolynomials.h"

#include <algorithm>
#include <vector>

#include "CorrectionData/Calculations/Calculations.h"

namespace Core {

namespace {

using CorrectionData::CoefficentCalculationFailedException;
using CorrectionData::Frame;

// A record from a JSON text may carry unequal counts, which the fit takes for a programming error.
void checkCountsAndThrowIfNeeded(const std::vector<float>& heights, const std::vector<float>& values) {
    if (heights.size() != values.size()) throw CoefficentCalculationFailedException(heights, values);
}

Polynomial fitted(const std::vector<float>& xVector, const std::vector<float>& yVector) {
    checkCountsAndThrowIfNeeded(xVector, yVector);
    std::vector<float> coefficients;
    CorrectionData::Calculations::calculateCoefficients(xVector, yVector, coefficients);
    Polynomial polynomial; // a fit through six points leaves the last coefficient 0
    if (coefficients.size() > polynomial.coefficients.size()) {
        throw CoefficentCalculationFailedException(xVector, yVector);
    }
    std::copy(coefficients.begin(), coefficients.end(), polynomial.coefficients.begin());
    return polynomial;
}

} // namespace

float Polynomial::at(float x) const {
    float power = 1.0f;
    float sum = coefficients[0];
    for (std::size_t i = 1; i < coefficients.size(); ++i) {
        power *= x;
        sum += coefficients[i] * power;
    }
    return sum;
}

Polynomial shadingPolynomial(const Frame& frame) { return fitted(frame.heights, frame.shading); }

DistortionPolynomials distortionPolynomials(const Frame& frame) {
    const std::vector<float> distorted = distortedHeights(frame);
    return {fitted(frame.heights, distorted), fitted(distorted, frame.heights)};
}

std::vector<float> distortedHeights(const Frame& frame) {
    checkCountsAndThrowIfNeeded(frame.heights, frame.radialDistortion);
    std::vector<float> distorted;
    distorted.reserve(frame.heights.size());
    for (std::size_t i = 0; i < frame.heights.size(); ++i) {
        distorted.push_back(frame.heights[i] * (frame.radialDistortion[i] / -1000.0f + 1.0f));
    }
    return distorted;
}

} // namespace Core
