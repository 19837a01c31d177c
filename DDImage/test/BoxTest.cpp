#include "DDImage/Box.h"

#include "DDImage/Format.h"

#include <gtest/gtest.h>

using DD::Image::Box;
using DD::Image::Format;

TEST(Box, IsNeverSmallerThanOnePixel) {
    EXPECT_EQ(Box(), Box(0, 0, 1, 1));
    EXPECT_EQ(Box(5, 6, 2, 3), Box(5, 6, 6, 7));
}

TEST(Box, CountsItsRightAndTopEdgesAsOutside) {
    const Box box(0, 0, 4, 2);
    EXPECT_TRUE(box.contains(3, 1));
    EXPECT_FALSE(box.contains(4, 1));
    EXPECT_FALSE(box.contains(3, 2));
}

TEST(Box, GrowsToHoldAnother) {
    Box box(0, 0, 4, 2);
    box.merge(Box(-1, 1, 2, 9));
    EXPECT_EQ(box, Box(-1, 0, 4, 9));
}

TEST(Box, ShrinksToThePartInCommon) {
    Box box(0, 0, 4, 4);
    box.intersect(Box(2, -3, 9, 3));
    EXPECT_EQ(box, Box(2, 0, 4, 3));
}

TEST(Box, DoesNotIntersectItsNeighbour) { EXPECT_FALSE(Box(0, 0, 4, 4).intersects(Box(4, 0, 8, 4))); }

TEST(Box, PadsAndMovesAllEdges) {
    Box box(0, 0, 4, 2);
    box.pad(2, 1);
    EXPECT_EQ(box, Box(-2, -1, 6, 3));
    box.move(10, 20);
    EXPECT_EQ(box, Box(8, 19, 16, 23));
}

TEST(Box, ClampsToItsOwnPixels) {
    const Box box(0, 0, 4, 2);
    EXPECT_EQ(box.clampx(7), 3);
    EXPECT_EQ(box.clampy(-7), 0);
}

TEST(Format, TellsFileSizeFromImageArea) {
    const Format format(2048, 1152, 0, 16, 2048, 1136);
    EXPECT_EQ(format.height(), 1152);
    EXPECT_EQ(format.h(), 1120);
}
