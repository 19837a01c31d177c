#include "Map/RecordedFrame.h"

#include <gtest/gtest.h>

using Host::PixelSize;
using Host::RecordedFrame;

TEST(RecordedFrame, LaysTheImageRadiusOverTheHalfDiagonal) {
    RecordingFormatDatabase::RecordingFormat format;
    format.imageRadius = 10.0f;
    EXPECT_EQ(10.0 / 500.0, RecordedFrame({600, 800}).millimetresPerPixel(format));
}

TEST(RecordedFrame, HasABoxWithAsMuchOnEitherSide) {
    EXPECT_EQ((PixelSize{610, 820}), RecordedFrame({600, 800}).box({610, 820}));
}

TEST(RecordedFrame, RoundsHalfAPixelOnEachSideUp) {
    EXPECT_EQ((PixelSize{602, 804}), RecordedFrame({600, 800}).box({601, 803}));
}
