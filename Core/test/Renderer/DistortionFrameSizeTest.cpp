#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <utility>

#include "Exception/Exception.h"
#include "Renderer/DistortionRenderer.h"

namespace {

using Size = std::pair<unsigned int, unsigned int>;

// A 100 × 100 px frame of a 200 × 100 px original; its half diagonal is 10 mm, and 9 mm in the rendered frame.
struct FrameSize : testing::Test {
    FrameSize() {
        parameter.currentWidth = 100;
        parameter.currentHeight = 100;
        parameter.originalWidth = 200;
        parameter.originalHeight = 100;
        parameter.imageRadius = 9.0f;
        parameter.frameImageRadius = 10.0f;
        parameter.b1 = 1.0f;
    }

    Size size() {
        Size size(7, 7);
        renderer.frameSize(size.first, size.second);
        return size;
    }

    std::string message() {
        Size size(7, 7);
        try {
            renderer.frameSize(size.first, size.second);
        } catch (const Exception& exception) {
            EXPECT_EQ(size, Size(7, 7)) << "both values stay untouched";
            return exception.what();
        }
        return "no exception";
    }

    Renderer::DistortionRenderer renderer;
    Renderer::DistortionParameter& parameter = renderer.parameter;
    const std::string impossible =
        "It is not possible to correctly calculate the new frame size with an image radius of 10 mm.";
};

} // namespace

TEST_F(FrameSize, GrowsToTheOriginalAspectRatioWithIdentityCoefficients) { EXPECT_EQ(size(), Size(200, 100)); }

TEST_F(FrameSize, StaysTheSameWithIdentityCoefficientsInTheOriginalAspectRatio) {
    parameter.originalWidth = 100;
    EXPECT_EQ(size(), Size(100, 100));
}

TEST_F(FrameSize, HoldsTheCornersThatMoveOutwards) {
    parameter.originalWidth = 100;
    parameter.b1 = 1.0f;
    parameter.b3 = 0.001f; // 1 + 0.001 * 10^2 = 1.1 at the corners: ceil(99 * 1.1) + 1
    EXPECT_EQ(size(), Size(110, 110));
}

TEST_F(FrameSize, HoldsTheEdgeMiddlesThatLieFurtherOutThanTheCorners) {
    parameter.originalWidth = 100;
    // 1.2 - 0.002 * d^2: 1.0 at the corners, 1.1 at the edges' middles (d^2 = 50).
    parameter.b1 = 1.2f;
    parameter.b3 = -0.002f;
    EXPECT_EQ(size(), Size(110, 110));
}

TEST_F(FrameSize, HoldsTheMiddlesOfTheLongAndTheShortEdgesEachByItsOwnFactor) {
    parameter.currentWidth = parameter.originalWidth = 201;
    parameter.currentHeight = parameter.originalHeight = 101;
    // 1.2 - 0.0021 * d^2: 0.99 at the corners, 1.032 at the right (d^2 = 80) and 1.158 at the bottom (d^2 = 20).
    parameter.b1 = 1.2f;
    parameter.b3 = -0.0021f;
    EXPECT_EQ(size(), Size(233, 117)) << "ceil(100 * 1.158) + 1 rows, and ceil(117 * 201 / 101) columns";
}

TEST_F(FrameSize, HoldsTheCornersInHeightWhereTheOriginalIsWider) {
    parameter.currentWidth = 201;
    parameter.currentHeight = 101;
    parameter.originalWidth = 402;
    parameter.originalHeight = 101;
    parameter.b3 = 0.00104f; // 1.104 at the corners
    EXPECT_EQ(size(), Size(446, 112)) << "ceil(100 * 1.104) + 1 rows, and ceil(112 * 402 / 101) columns";
}

TEST_F(FrameSize, HoldsTheCornersInWidthWhereTheOriginalIsTaller) {
    parameter.currentWidth = 201;
    parameter.currentHeight = 101;
    parameter.originalWidth = 101;
    parameter.originalHeight = 402;
    parameter.b3 = 0.00104f; // 1.104 at the corners
    EXPECT_EQ(size(), Size(222, 884)) << "ceil(200 * 1.104) + 1 columns, and ceil(222 * 402 / 101) rows";
}

TEST_F(FrameSize, GrowsInHeightToTheAspectRatioOfAnUprightOriginal) {
    parameter.originalWidth = 100;
    parameter.originalHeight = 201;
    EXPECT_EQ(size(), Size(100, 201));
}

TEST_F(FrameSize, ShrinksWithThePicture) {
    parameter.originalWidth = 100;
    parameter.b1 = 0.5f;
    EXPECT_EQ(size(), Size(51, 51));
}

TEST_F(FrameSize, OfOnePixelIsOnePixel) {
    parameter.currentWidth = parameter.currentHeight = parameter.originalWidth = parameter.originalHeight = 1;
    EXPECT_EQ(size(), Size(1, 1));
}

TEST_F(FrameSize, FailsWithTheRadiusWhenTheFactorIsNegativeAtTheCorner) {
    parameter.b3 = -0.02f;
    EXPECT_EQ(message(), impossible);
}

TEST_F(FrameSize, FailsWithTheRadiusWhenTheFactorIsNegativeAtAnEdgeOnly) {
    // -0.1 at the edges' middles (d^2 = 50), 0.9 at the corners.
    parameter.b1 = -1.1f;
    parameter.b3 = 0.02f;
    EXPECT_EQ(message(), impossible);
}

TEST_F(FrameSize, FailsWhenTheFactorIsInfinite) {
    parameter.b1 = std::numeric_limits<float>::infinity();
    EXPECT_EQ(message(), impossible);
}

TEST_F(FrameSize, FailsWhenTheFactorIsNotANumber) {
    parameter.b4 = std::numeric_limits<float>::quiet_NaN();
    EXPECT_EQ(message(), impossible);
}

TEST_F(FrameSize, FailsWhenTheFrameWouldBeTooLargeForAnImage) {
    parameter.b1 = 1e9f;
    EXPECT_EQ(message(), impossible);
}

TEST_F(FrameSize, FailsWhenTheOriginalHasNoHeight) {
    parameter.originalHeight = 0;
    EXPECT_EQ(message(), impossible);
}

TEST_F(FrameSize, FailsWhenTheOriginalHasNoWidth) {
    parameter.originalWidth = 0;
    EXPECT_EQ(message(), impossible);
}

TEST_F(FrameSize, FailsWithBothRadiiWhenTheImageRadiusIsNotPositive) {
    parameter.imageRadius = -0.5f;
    EXPECT_EQ(message(), "Image radii of -0.5 mm and 10 mm are invalid and need to be greater than zero.");
}

TEST_F(FrameSize, FailsWithBothRadiiWhenTheFrameImageRadiusIsNotPositive) {
    parameter.frameImageRadius = 0.0f;
    EXPECT_EQ(message(), "Image radii of 9 mm and 0 mm are invalid and need to be greater than zero.");
}

TEST_F(FrameSize, FailsWithBothRadiiWhenOneIsNotANumber) {
    parameter.frameImageRadius = std::nanf("");
    EXPECT_EQ(message(), "Image radii of 9 mm and nan mm are invalid and need to be greater than zero.");
}

TEST(DistortionFactor, IsThePolynomialDividedByTheDistance) {
    Renderer::DistortionParameter parameter;
    parameter.b0 = 1;
    parameter.b1 = 2;
    parameter.b2 = 3;
    parameter.b3 = 4;
    parameter.b4 = 5;
    parameter.b5 = 6;
    parameter.b6 = 7;
    EXPECT_EQ(distortionFactorForDistance(2.0f, parameter), 769.0f / 2.0f);
}

TEST(DistortionFactor, IsOneUnlessTheDistanceIsGreaterThanZero) {
    const Renderer::DistortionParameter parameter;
    for (const float distance : {0.0f, -1.0f, std::nanf("")})
        EXPECT_EQ(distortionFactorForDistance(distance, parameter), 1.0f) << distance;
}
