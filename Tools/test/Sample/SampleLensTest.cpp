#include "Sample/SampleLens.h"

#include <gtest/gtest.h>

using Tools::SampleLens;

TEST(SampleLens, DistortsByThePublishedModel) {
    const SampleLens lens(32.0);
    // u = 0.4: 0.4 · (1 - 0.399431 · 0.16 + 0.188924 · 0.0256)
    EXPECT_NEAR(lens.recordedDistance(12.8), 32.0 * 0.37637, 32.0 * 1e-5);
}

TEST(SampleLens, FindsBackToTheIdealDistance) {
    const SampleLens lens(32.0);
    for (double ideal = 0.0; ideal <= 16.0; ideal += 0.5) {
        EXPECT_NEAR(lens.idealDistance(lens.recordedDistance(ideal)), ideal, 1e-12) << ideal;
    }
}

TEST(SampleLens, FallsOffWithTheFourthPowerOfTheCosine) {
    const SampleLens lens(32.0);
    EXPECT_EQ(lens.illumination(0.0), 1.0);
    // At a field angle of 20 degrees: tan 20° = 0.363970, cos⁴ 20° = 0.779728.
    EXPECT_NEAR(lens.illumination(lens.recordedDistance(32.0 * 0.363970234)), 0.779728, 1e-6);
}
