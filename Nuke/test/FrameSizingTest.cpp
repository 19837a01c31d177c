#include "FrameSizing.h"

#include <limits>

#include <gtest/gtest.h>
#include <boost/math/policies/error_handling.hpp>

using DD::Image::Box;
using FrameSizing::Size;

namespace {

bool operator==(Size a, Size b) { return a.width == b.width && a.height == b.height; }

constexpr Size c_format{2048, 1152};
const Box c_formatBox(0, 0, 2048, 1152);

} // namespace

TEST(FrameSizing, TakesTheFormatForABoxThatFillsIt) {
    EXPECT_TRUE(FrameSizing::frameAround(c_formatBox, c_formatBox) == c_format);
}

TEST(FrameSizing, HoldsAnOverhangToTheSidesWithTheFormatsAspectRatio) {
    EXPECT_TRUE(FrameSizing::frameAround(Box(-64, 0, 2112, 1152), c_formatBox) == (Size{2176, 1224}));
}

TEST(FrameSizing, HoldsAnOverhangAboveWithTheFormatsAspectRatio) {
    EXPECT_TRUE(FrameSizing::frameAround(Box(0, 0, 2048, 1170), c_formatBox) == (Size{2112, 1188}));
}

TEST(FrameSizing, MeasuresAnOverhangFromTheFormatsOwnCorner) {
    EXPECT_TRUE(FrameSizing::frameAround(Box(36, 10, 2148, 1162), Box(100, 10, 2148, 1162)) == (Size{2176, 1224}));
}

TEST(FrameSizing, HasASmallerFrameForABoxThatKeepsAwayFromAllSides) {
    EXPECT_TRUE(FrameSizing::frameAround(Box(64, 36, 1984, 1116), c_formatBox) == (Size{1920, 1080}));
}

TEST(FrameSizing, CentresAFrameOnTheFormatWithHalfPixelsAwayFromZero) {
    EXPECT_EQ(FrameSizing::boxCenteredOn(c_format, {2051, 1155}), Box(-2, -2, 2050, 1154));
    EXPECT_EQ(FrameSizing::boxCenteredOn(c_format, {2045, 1149}), Box(2, 2, 2046, 1150));
}

TEST(FrameSizing, LeavesWhatRemainsOfAFormatWithOverscanInsideInWholePixels) {
    EXPECT_TRUE(FrameSizing::withoutOverscan({2000, 1000}, 10.0f) == (Size{1818, 909}));
}

TEST(FrameSizing, RefusesToRoundASizeThatIsNotFinite) {
    EXPECT_THROW(FrameSizing::withoutOverscan(c_format, std::numeric_limits<float>::quiet_NaN()),
                 boost::math::rounding_error);
}

TEST(FrameSizing, CallsTheGrowthOfTheHalfDiagonalBetweenPixelCentresOverscan) {
    // 3-4-5 triangles: half-diagonals of 1250 and 1000 px.
    EXPECT_EQ(FrameSizing::overscan({1501, 2001}, {1201, 1601}), 25.0f);
}
