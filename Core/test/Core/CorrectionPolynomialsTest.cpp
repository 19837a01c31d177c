#include "Core/CorrectionPolynomials.h"

#include <gtest/gtest.h>

#include <cmath>

#include "CorrectionData/Calculations/Calculations.h"

using CorrectionData::CoefficentCalculationFailedException;
using CorrectionData::Frame;

namespace {

Frame ordinaryFrame() {
    Frame frame;
    frame.heights = {0.0f, 5.0f, 10.0f, 15.0f, 18.0f, 21.4f};
    frame.shading = {100.0f, 98.0f, 93.0f, 84.0f, 77.0f, 68.0f};
    frame.radialDistortion = {0.0f, 1.0f, 4.0f, 9.0f, 13.0f, 18.5f};
    return frame;
}

} // namespace

TEST(CorrectionPolynomials, evaluateAllSevenCoefficients) {
    EXPECT_FLOAT_EQ(1 + 2 * 2 + 3 * 4 + 4 * 8 + 5 * 16 + 6 * 32 + 7 * 64,
                    (Core::Polynomial{{1, 2, 3, 4, 5, 6, 7}}.at(2.0f)));
}

TEST(CorrectionPolynomials, evaluateTermByTermInSinglePrecision) {
    const float small = std::ldexp(1.0f, -25); // a quarter of what follows 1
    EXPECT_EQ(1.0f, (Core::Polynomial{{1, small, small, small, small, small, small}}.at(1.0f)));
}

TEST(CorrectionPolynomials, positiveDistortionDrawsAHeightInward) {
    Frame frame = ordinaryFrame();
    EXPECT_FLOAT_EQ(10.0f * 0.996f, Core::distortedHeights(frame)[2]);
}

TEST(CorrectionPolynomials, reproduceTheShadingAtEveryHeight) {
    const Frame frame = ordinaryFrame();
    const Core::Polynomial shading = Core::shadingPolynomial(frame);
    for (std::size_t i = 0; i < frame.heights.size(); ++i) {
        // Terms of some hundred percent, each with an error of 6e-8 of it, cancel.
        EXPECT_NEAR(frame.shading[i], shading.at(frame.heights[i]), 1e-3f);
    }
}

TEST(CorrectionPolynomials, reproduceTheDistortedHeights) {
    const Frame frame = ordinaryFrame();
    const Core::DistortionPolynomials polynomials = Core::distortionPolynomials(frame);
    EXPECT_NEAR(21.4f * (1.0f - 0.0185f), polynomials.distorted.at(21.4f), 1e-4f); // as above, terms of some 30 mm
}

TEST(CorrectionPolynomials, leadBackFromTheDistortedHeights) {
    const Frame frame = ordinaryFrame();
    const Core::DistortionPolynomials polynomials = Core::distortionPolynomials(frame);
    EXPECT_NEAR(21.4f, polynomials.undistorted.at(21.4f * (1.0f - 0.0185f)), 1e-4f); // as above
}

TEST(CorrectionPolynomials, ofSixPointsEndInAZero) {
    EXPECT_EQ(0.0f, Core::shadingPolynomial(ordinaryFrame()).coefficients[6]);
}

TEST(CorrectionPolynomials, refuseUnequalCountsOfShadings) {
    Frame frame = ordinaryFrame();
    frame.shading.pop_back();
    EXPECT_THROW(Core::shadingPolynomial(frame), CoefficentCalculationFailedException);
}

TEST(CorrectionPolynomials, refuseUnequalCountsOfDistortions) {
    Frame frame = ordinaryFrame();
    frame.radialDistortion.push_back(20.0f);
    EXPECT_THROW(Core::distortionPolynomials(frame), CoefficentCalculationFailedException);
}
