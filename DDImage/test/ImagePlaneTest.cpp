#include "DDImage/ImagePlane.h"

#include <gtest/gtest.h>

using namespace DD::Image;

TEST(ImagePlane, HoldsNothingUntilItIsMadeWritable) {
    ImagePlane plane(Box(0, 0, 4, 2), true, Mask_RGBA);
    EXPECT_EQ(plane.usage(), 0u);
    EXPECT_EQ(plane.readable(), nullptr);
}

TEST(ImagePlane, UsesWidthTimesHeightTimesComponentsTimesFourBytes) {
    ImagePlane plane(Box(-1, 0, 4, 2), true, Mask_RGB);
    plane.makeWritable();
    EXPECT_EQ(plane.usage(), 5u * 2 * 3 * 4);
}

TEST(ImagePlane, IsBlackWhenFresh) {
    ImagePlane plane(Box(0, 0, 2, 2), true, Chan_Z);
    plane.makeWritable();
    EXPECT_EQ(std::vector<float>(plane.readable(), plane.readable() + 4), std::vector<float>(4, 0.f));
}

TEST(ImagePlane, StartsAtItsBottomLeftPixelAndGoesUp) {
    ImagePlane plane(Box(10, 20, 13, 22), true, Mask_RGBA);
    plane.makeWritable();
    plane.writableAt(10, 20, 0) = 1;
    plane.writableAt(11, 21, 2) = 2;
    EXPECT_EQ(plane.readable()[0], 1);
    EXPECT_EQ(plane.readable()[3 * 4 + 4 + 2], 2);
}

TEST(ImagePlane, PackedKeepsThePixelsComponentsTogether) {
    const ImagePlane plane(Box(0, 0, 5, 3), true, Mask_RGBA);
    EXPECT_EQ(plane.colStride(), 4);
    EXPECT_EQ(plane.rowStride(), 20);
    EXPECT_EQ(plane.chanStride(), 1);
}

TEST(ImagePlane, UnpackedKeepsEachChannelsImageTogether) {
    const ImagePlane plane(Box(0, 0, 5, 3), false, Mask_RGBA);
    EXPECT_EQ(plane.colStride(), 1);
    EXPECT_EQ(plane.rowStride(), 5);
    EXPECT_EQ(plane.chanStride(), 15);
}

TEST(ImagePlane, CountsItsOwnChannelsFromZero) {
    ChannelSet set = Chan_Green;
    set += Chan_Z;
    const ImagePlane plane(Box(), true, set);
    EXPECT_EQ(plane.chanNo(Chan_Green), 0);
    EXPECT_EQ(plane.chanNo(Chan_Z), 1);
    EXPECT_EQ(plane.chanNo(Chan_Red), -1);
}

TEST(ImagePlane, SharesItsFloatsWithACopy) {
    ImagePlane plane(Box(), true, Chan_Z);
    plane.makeWritable();
    const ImagePlane copy = plane;
    EXPECT_EQ(copy.readable(), plane.readable());
    EXPECT_EQ(plane.memory().refCount(), 2);
}

TEST(ImagePlane, MadeUniqueKeepsItsPixelsApartFromTheCopys) {
    ImagePlane plane(Box(), true, Chan_Z);
    plane.makeWritable();
    plane.writableAt(0, 0, 0) = 7;
    const ImagePlane copy = plane;
    plane.makeUnique();
    EXPECT_EQ(plane.at(0, 0, 0), 7);
    plane.writableAt(0, 0, 0) = 8;
    EXPECT_EQ(copy.at(0, 0, 0), 7);
}

TEST(ImagePlane, MadeUniqueKeepsFloatsThatNobodyShares) {
    ImagePlane plane(Box(), true, Chan_Z);
    plane.makeWritable();
    const float* const before = plane.readable();
    plane.makeUnique();
    EXPECT_EQ(plane.readable(), before);
}

TEST(ImagePlane, CopiesChannelsAndPixelsInCommon) {
    ImagePlane source(Box(1, 0, 3, 1), false, Mask_RGB);
    source.makeWritable();
    source.writableAt(1, 0, 1) = 5;
    ImagePlane target(Box(0, 0, 2, 1), true, Mask_RGBA);
    target.makeWritable();
    target.writableAt(1, 0, 3) = 9;
    target.copyIntersectionFrom(source);
    EXPECT_EQ(std::vector<float>(target.readable(), target.readable() + 8),
              (std::vector<float>{0, 0, 0, 0, 0, 5, 0, 9}));
}

TEST(ImagePlane, CopiesRowsOfOneLayoutToTheirPlaces) {
    ImagePlane source(Box(1, 1, 3, 2), true, Mask_RGBA);
    source.makeWritable();
    source.writableAt(1, 1, 2) = 5;
    ImagePlane target(Box(0, 0, 2, 2), true, Mask_RGBA);
    target.makeWritable();
    target.copyIntersectionFrom(source);
    EXPECT_EQ(target.at(1, 1, 2), 5);
    EXPECT_EQ(target.at(0, 1, 2), 0);
}

TEST(ImagePlaneDeathTest, StopsOnWritingWithoutFloats) {
    ImagePlane plane(Box(), true, Chan_Z);
    EXPECT_DEATH(plane.writable(), "without floats: makeWritable\\(\\) was not called");
}

TEST(ImagePlaneDeathTest, StopsOnWritingToSharedFloats) {
    ImagePlane plane(Box(), true, Chan_Z);
    plane.makeWritable();
    const ImagePlane copy = plane;
    EXPECT_DEATH(plane.writable(), "on shared floats: makeUnique\\(\\) was not called");
}
