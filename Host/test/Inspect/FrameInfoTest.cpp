#include "Inspect/FrameInfo.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

// A lens without distortion, and a frame that is not sized.
Renderer::DistortionParameter straight() {
    Renderer::DistortionParameter parameter;
    parameter.currentWidth = parameter.originalWidth = 4096;
    parameter.currentHeight = parameter.originalHeight = 2160;
    parameter.imageRadius = parameter.frameImageRadius = 20.0f;
    parameter.a1 = parameter.b1 = 1.0f;
    return parameter;
}

} // namespace

TEST(UndistortionDeviation, isNoneWithoutDistortion) { EXPECT_EQ(0.0, Host::undistortionDeviation(straight())); }

TEST(UndistortionDeviation, isNoneForAPlainChangeOfScale) {
    // Every distance has the same factor, so it does not matter at which distance it is taken.
    Renderer::DistortionParameter parameter = straight();
    parameter.imageRadius = 19.0f;
    parameter.a1 = 20.0f / 19.0f;
    parameter.b1 = 0.95f;
    EXPECT_NEAR(0.0, Host::undistortionDeviation(parameter), 1e-9); // rounding of double precision
}

TEST(UndistortionDeviation, isSeveralPixelsWhereTheCorrectedPictureIsMuchSmaller) {
    // 3 % at the corner, growing with the square of the height: d = h · (1 − 0.03 · (h ÷ 20)²), and back by its series.
    Renderer::DistortionParameter parameter = straight();
    const float k = 0.03f / 400.0f;
    parameter.imageRadius = 20.0f * 0.97f;
    parameter.b3 = -k;
    parameter.a3 = k;
    const double corner = std::hypot(4096.0, 2160.0) / 2.0;
    const auto factor = [&](double distance) { return 1.0 + static_cast<double>(k) * distance * distance; };
    // Largest at the corner, where the plug-in takes the factor of 19.4 mm instead of 20 mm.
    const double expected = corner * (factor(20.0) - factor(static_cast<double>(parameter.imageRadius)));
    EXPECT_NEAR(expected, Host::undistortionDeviation(parameter), 1e-3); // coefficients in single precision
    EXPECT_GT(expected, 4.0);
}
