#include "Lens/FitProblems.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using CorrectionData::Frame;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

Frame ordinaryFrame() {
    Frame frame;
    frame.heights = {0.0f, 5.0f, 10.0f, 15.0f, 18.0f, 21.4f};
    frame.shading = {100.0f, 98.0f, 93.0f, 84.0f, 77.0f, 68.0f};
    frame.radialDistortion = {0.0f, 1.0f, 4.0f, 9.0f, 13.0f, 18.5f};
    return frame;
}

std::vector<std::string> problems(const Frame& frame, float imageRadius) {
    std::vector<std::string> texts;
    for (const Tools::FitProblem& problem : Tools::fitProblems(frame, imageRadius)) {
        texts.push_back(problem.kind + ": " + problem.message);
    }
    return texts;
}

} // namespace

TEST(FitProblems, areNoneForAnOrdinaryLens) { EXPECT_THAT(problems(ordinaryFrame(), 21.0f), IsEmpty()); }

TEST(FitProblems, includeEqualHeights) {
    Frame frame = ordinaryFrame();
    frame.heights[3] = 10.0f;
    EXPECT_THAT(problems(frame, 21.0f),
                ElementsAre("equal-heights: height 10 mm occurs twice",
                            "fit-failed: the frame cannot be corrected: Calculation of the polynomial "
                            "coefficients did fail."));
}

TEST(FitProblems, allowTheFirstTwoOfSevenHeightsToBeEqual) {
    Frame frame = ordinaryFrame();
    frame.heights.insert(frame.heights.begin(), 0.0f);
    frame.shading.insert(frame.shading.begin(), 100.0f);
    frame.radialDistortion.insert(frame.radialDistortion.begin(), 0.0f);
    EXPECT_THAT(problems(frame, 21.0f), IsEmpty());
}

TEST(FitProblems, includeHugeCoefficients) {
    Frame frame = ordinaryFrame();
    frame.heights[2] = 5.001f;
    EXPECT_THAT(
        problems(frame, 21.0f),
        Contains("huge-coefficients: the fitted curve has huge coefficients and oscillates between the points"));
}

TEST(FitProblems, includeAnIlluminationThatReachesZero) {
    Frame frame = ordinaryFrame();
    frame.shading = {100.0f, 80.0f, 60.0f, 40.0f, 28.0f, 0.0f};
    EXPECT_THAT(problems(frame, 21.4f), Contains(testing::StartsWith("illumination: the fitted illumination is ")));
}

TEST(FitProblems, includeDistortionThatTurnsRound) {
    Frame frame = ordinaryFrame();
    frame.radialDistortion = {0.0f, 0.0f, 0.0f, 0.0f, 100.0f, -100.0f};
    EXPECT_THAT(problems(frame, 21.4f),
                Contains(testing::StartsWith("distortion-not-monotonic: the fitted distortion turns ")));
}

TEST(FitProblems, includeACornerFarBeyondTheLastHeight) {
    EXPECT_THAT(problems(ordinaryFrame(), 24.0f),
                Contains("beyond-heights: the image extends to 24 mm, but the last height is 21.4 mm"));
}
