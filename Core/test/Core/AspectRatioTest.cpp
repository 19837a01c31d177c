#include "Core/AspectRatio.h"

#include <gtest/gtest.h>

namespace {

Core::AspectRatio aspectRatio(std::uint32_t width, std::uint32_t height) {
    RecordingFormatDatabase::RecordingFormat format;
    format.clipResolutionWidth = width;
    format.clipResolutionHeight = height;
    return Core::AspectRatio(format);
}

} // namespace

TEST(AspectRatio, ExpectsTheHeightRoundedUp) { EXPECT_EQ(aspectRatio(1920, 1080).expectedHeight(1921), 1081u); }

TEST(AspectRatio, IsThatOfAFrameWhoseHeightIsOffByOnePixel) {
    EXPECT_TRUE(aspectRatio(1920, 1080).isThatOf(1920, 1079));
    EXPECT_TRUE(aspectRatio(1920, 1080).isThatOf(1920, 1081));
}

TEST(AspectRatio, IsNotThatOfAFrameWhoseHeightIsOffByTwoPixels) {
    EXPECT_FALSE(aspectRatio(1920, 1080).isThatOf(1920, 1078));
    EXPECT_FALSE(aspectRatio(1920, 1080).isThatOf(1920, 1082));
}

TEST(AspectRatio, ExpectsTheLargestNumberForAHeightThatNoFrameHas) {
    EXPECT_EQ(aspectRatio(1, 2).expectedHeight(4000000000u), 4294967295u);
}
