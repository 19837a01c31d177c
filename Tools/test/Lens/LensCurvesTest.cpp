#include "Lens/LensCurves.h"

#include <gtest/gtest.h>

#include "CorrectionData/Calculations/Calculations.h"

namespace {

CorrectionData::Frame ordinaryFrame() {
    CorrectionData::Frame frame;
    frame.heights = {0.0f, 5.0f, 10.0f, 15.0f, 18.0f, 21.4f};
    frame.shading = {100.0f, 98.0f, 93.0f, 84.0f, 77.0f, 68.0f};
    frame.radialDistortion = {0.0f, 1.0f, 4.0f, 9.0f, 13.0f, 18.5f};
    return frame;
}

} // namespace

TEST(LensCurves, passThroughTheMeasuredIllumination) {
    EXPECT_NEAR(77.0, Tools::LensCurves(ordinaryFrame()).illuminationAt(18.0f), 1e-3); // single precision, 7 terms
}

TEST(LensCurves, passThroughTheMeasuredDistortion) {
    EXPECT_NEAR(18.5, Tools::LensCurves(ordinaryFrame()).distortionAt(21.4f), 1e-2); // 1e-6 of 21.4 mm is 5e-5 ‰ a term
}

TEST(LensCurves, giveTheDistortionsLimitAtTheCentre) {
    const Tools::LensCurves curves(ordinaryFrame());
    EXPECT_NEAR(curves.distortionAt(0.06f), curves.distortionAt(0.0f), 0.05); // noise of 1e-7 of 1 in 0.06 mm
}

TEST(LensCurves, shiftOutwardForPositiveDistortion) {
    EXPECT_NEAR(21.4 * 0.0185, Tools::LensCurves(ordinaryFrame()).shiftAt(21.4f), 1e-4); // as above, in mm
}

TEST(LensCurves, comeBackFromARoundTripNearly) {
    // Two sextics are not exact inverses between the points; for a lens like this they miss by less than 0.01 mm.
    const double largest = Tools::LensCurves(ordinaryFrame()).largestRoundTrip(21.4f);
    EXPECT_LT(largest, 1e-2);
    EXPECT_GT(largest, 0.0);
}

TEST(LensCurves, missTheirPointsByRoundingOnly) {
    const Tools::LensCurves curves(ordinaryFrame());
    EXPECT_LT(curves.largestForwardResidual(), 1e-4); // single precision of some 30 mm
    EXPECT_LT(curves.largestInverseResidual(), 1e-4);
}

TEST(LensCurves, areNoneForPointsWithoutAFit) {
    CorrectionData::Frame frame = ordinaryFrame();
    frame.heights[3] = 10.0f;
    EXPECT_THROW(Tools::LensCurves{frame}, CorrectionData::CoefficentCalculationFailedException);
}
