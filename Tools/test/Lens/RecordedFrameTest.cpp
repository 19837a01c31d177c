#include "Lens/RecordedFrame.h"

#include <gtest/gtest.h>

using Tools::RecordedFrame;

TEST(RecordedFrame, LaysTheImageRadiusOverTheHalfDiagonal) {
    RecordingFormatDatabase::RecordingFormat format;
    format.imageRadius = 10.0f;
    EXPECT_EQ(10.0 / 500.0, RecordedFrame({600, 800}).millimetresPerPixel(format));
}

TEST(RecordedFrame, IsWhatRemainsOfAFormatWithOverscanInsideInWholePixels) {
    // 10 % of 661 × 881 px: 600.9 × 800.9.
    EXPECT_EQ(RecordedFrame({601, 801}).halfDiagonal, RecordedFrame({661, 881}, 10.0f).halfDiagonal);
}
