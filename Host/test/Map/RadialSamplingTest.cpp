#include "Map/RadialSampling.h"

#include <gtest/gtest.h>

using Host::RadialSampling;

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
