#include "Sample/SamplePicture.h"

#include <gtest/gtest.h>

#include <cmath>

using Tools::SamplePicture;

namespace {

struct Extremes {
    double value = 0.0, gradient = 0.0, curvature = 0.0;
};

/// Largest value, first and second differences along eight directions on a fine raster with crossings of all lines.
Extremes measure() {
    const SamplePicture picture(24.0);
    constexpr double h = 0.05; // px; its discretisation error is below 1 % of the limits
    Extremes extremes;
    for (double y = -60.0; y < 60.0; y += 0.37) {
        for (double x = -60.0; x < 60.0; x += 0.41) {
            const auto here = picture.color(x, y, 3);
            for (int direction = 0; direction < 4; ++direction) {
                const double dx = h * std::cos(direction * 0.7853981633974483);
                const double dy = h * std::sin(direction * 0.7853981633974483);
                const auto after = picture.color(x + dx, y + dy, 3);
                const auto before = picture.color(x - dx, y - dy, 3);
                for (std::size_t channel = 0; channel < 3; ++channel) {
                    extremes.value = std::max(extremes.value, double(here[channel]));
                    extremes.gradient = std::max(
                        extremes.gradient, std::abs(double(after[channel]) - double(before[channel])) / (2.0 * h));
                    // Floats are off by 6e-8 each: 1e-4 after the division.
                    extremes.curvature = std::max(
                        extremes.curvature,
                        std::abs(double(after[channel]) - 2.0 * double(here[channel]) + double(before[channel])) /
                                (h * h) -
                            1e-4);
                }
            }
        }
    }
    return extremes;
}

} // namespace

TEST(SamplePicture, StaysWithinItsStatedLimitsWithoutWastingThem) {
    const Extremes extremes = measure();
    EXPECT_LE(extremes.value, SamplePicture::maximum());
    EXPECT_LE(extremes.gradient, SamplePicture::maximumGradient());
    EXPECT_LE(extremes.curvature, SamplePicture::maximumCurvature());
    EXPECT_GT(extremes.value, 0.5 * SamplePicture::maximum());
    EXPECT_GT(extremes.gradient, 0.5 * SamplePicture::maximumGradient());
    EXPECT_GT(extremes.curvature, 0.5 * SamplePicture::maximumCurvature());
}

TEST(SamplePicture, MovesFromFrameToFrame) {
    const SamplePicture picture(120.0);
    EXPECT_NE(picture.color(13.0, 7.0, 0), picture.color(13.0, 7.0, 1));
}
