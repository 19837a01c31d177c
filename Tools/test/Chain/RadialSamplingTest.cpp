#include "Chain/RadialSampling.h"

#include <gtest/gtest.h>

#include <cmath>

using Tools::RadialSampling;

namespace {

/// 600 × 800 px: 500 px from centre to corner, which stand for 10 mm; 1 % outwards at the corner.
Renderer::DistortionParameter parameter() {
    Renderer::DistortionParameter parameter;
    parameter.currentWidth = 600;
    parameter.currentHeight = 800;
    parameter.imageRadius = 10.0f;
    parameter.a1 = 1.0f;
    parameter.a3 = 0.0001f;
    return parameter;
}

/// A lens without distortion.
Renderer::DistortionParameter straight() {
    Renderer::DistortionParameter parameter;
    parameter.currentWidth = 4096;
    parameter.currentHeight = 2160;
    parameter.imageRadius = 20.0f;
    parameter.a1 = 1.0f;
    return parameter;
}

const double corner = std::hypot(4096.0, 2160.0) / 2.0; // px

} // namespace

TEST(RadialSampling, LaysTheImageRadiusOverTheHalfDiagonal) {
    EXPECT_EQ(RadialSampling::rendered(parameter()).millimetresPerPixel(), 10.0 / 500.0);
}

TEST(RadialSampling, GivesDistancesInPixels) {
    // 10 mm → 10 + 0.0001 × 1000 = 10.1 mm; single precision holds the coefficient to 3e-12 only.
    EXPECT_NEAR(RadialSampling::rendered(parameter()).sourceDistance(500.0), 505.0, 1e-6);
}

TEST(RadialSampling, LeavesTheCentreWhereItIs) {
    Renderer::DistortionParameter shifted = parameter();
    shifted.a0 = 0.5f;
    EXPECT_EQ(RadialSampling::rendered(shifted).factor(0.0), 1.0);
}

TEST(RadialSampling, ReadsTheSameCurveAtAnotherScale) {
    // 500 px at 0.04 mm are 20 mm, where the curve gives 20.8.
    EXPECT_NEAR(RadialSampling::rendered(parameter()).at(0.04).sourceDistance(500.0), 520.0, 1e-6);
}

TEST(NodeDeviation, IsNoneWithoutDistortion) { EXPECT_EQ(0.0, Tools::nodeDeviation(straight(), 20.0 / corner)); }

TEST(NodeDeviation, IsNoneForAPlainChangeOfScale) {
    // Every distance has the same factor, so it does not matter at which distance it is taken.
    Renderer::DistortionParameter parameter = straight();
    parameter.imageRadius = 19.0f;
    parameter.a1 = 20.0f / 19.0f;
    EXPECT_NEAR(0.0, Tools::nodeDeviation(parameter, 20.0 / corner), 1e-9); // rounding of double precision
}

TEST(NodeDeviation, IsSeveralPixelsWhereTheCorrectedPictureIsMuchSmaller) {
    // 3 % at the corner, growing with the square of the height: d = h · (1 − 0.03 · (h ÷ 20)²), and back by its series.
    Renderer::DistortionParameter parameter = straight();
    const float k = 0.03f / 400.0f;
    parameter.imageRadius = 20.0f * 0.97f;
    parameter.a3 = k;
    const auto factor = [&](double distance) { return 1.0 + static_cast<double>(k) * distance * distance; };
    // Largest at the corner, where the plug-in takes the factor of 19.4 mm instead of 20 mm.
    const double expected = corner * (factor(20.0) - factor(static_cast<double>(parameter.imageRadius)));
    EXPECT_NEAR(expected, Tools::nodeDeviation(parameter, 20.0 / corner), 1e-3); // coefficients in single precision
    EXPECT_GT(expected, 4.0);
}
