#include "PackedPlane.h"

#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace DD::Image;
using testing::ElementsAre;

namespace {

/// A 2 × 1 plane whose component c of pixel x is 10 x + c + 1.
ImagePlane makePlane(const ChannelSet& channels, bool packed) {
    ImagePlane plane(Box(0, 0, 2, 1), packed, channels);
    plane.makeWritable();
    for (int x = 0; x < 2; ++x) {
        for (int component = 0; component < plane.nComps(); ++component) {
            plane.writableAt(x, 0, component) = static_cast<float>(10 * x + component + 1);
        }
    }
    return plane;
}

std::vector<float> pixels(const PackedPlane& packed, std::size_t pixelCount) {
    return std::vector<float>(packed.pixels(), packed.pixels() + pixelCount * 4);
}

} // namespace

TEST(PackedPlane, TakesPackedRgbaAsItStands) {
    EXPECT_TRUE(PackedPlane::isPacked(makePlane(Mask_RGBA, true), Box(0, 0, 2, 1)));
}

TEST(PackedPlane, DoesNotTakeOtherShapesAsTheyStand) {
    EXPECT_FALSE(PackedPlane::isPacked(makePlane(Mask_RGB, true), Box(0, 0, 2, 1)));
    EXPECT_FALSE(PackedPlane::isPacked(makePlane(Mask_RGBA, false), Box(0, 0, 2, 1)));
    EXPECT_FALSE(PackedPlane::isPacked(makePlane(Mask_RGBA, true), Box(0, 0, 2, 2)));
}

TEST(PackedPlane, FillsMissingLanesWithZero) {
    const PackedPlane packed(makePlane(Mask_RGB, true), Box(0, 0, 2, 1), 0);
    EXPECT_THAT(pixels(packed, 2), ElementsAre(1, 2, 3, 0, 11, 12, 13, 0));
}

TEST(PackedPlane, InterleavesUnpackedChannels) {
    const PackedPlane packed(makePlane(Mask_RGBA, false), Box(0, 0, 2, 1), 0);
    EXPECT_THAT(pixels(packed, 2), ElementsAre(1, 2, 3, 4, 11, 12, 13, 14));
}

TEST(PackedPlane, PutsAlphaIntoItsLaneWithoutTheColorsBetween) {
    ChannelSet channels(Chan_Red);
    channels += Chan_Alpha;
    const PackedPlane packed(makePlane(channels, true), Box(0, 0, 2, 1), 0);
    EXPECT_THAT(pixels(packed, 2), ElementsAre(1, 0, 0, 2, 11, 0, 0, 12));
}

TEST(PackedPlane, PutsColorsIntoTheirLanesWhateverTheirOrder) {
    // Channels get their numbers in order of first use, as a file lists them: A, B, G, R.
    ChannelSet channels(channel("reversed.alpha"));
    channels += channel("reversed.blue");
    channels += channel("reversed.green");
    channels += channel("reversed.red");
    const ImagePlane plane = makePlane(channels, true);
    EXPECT_FALSE(PackedPlane::isPacked(plane, plane.bounds()));
    EXPECT_THAT(pixels(PackedPlane(plane, Box(0, 0, 2, 1), 0), 2), ElementsAre(4, 3, 2, 1, 14, 13, 12, 11));
}

TEST(PackedPlane, LeavesTheLaneOfAlphaToAlpha) {
    ChannelSet channels(channel("motion.u"));
    for (const char* const name : {"motion.v", "motion.x", "motion.y"}) channels += channel(name);
    const ImagePlane plane = makePlane(channels, true);
    const PackedPlane first(plane, plane.bounds(), 0);
    EXPECT_EQ(first.componentCount(), 3);
    EXPECT_THAT(pixels(first, 2), ElementsAre(1, 2, 3, 0, 11, 12, 13, 0));
    const PackedPlane second(plane, plane.bounds(), 3);
    EXPECT_EQ(second.componentCount(), 1);
    EXPECT_THAT(pixels(second, 2), ElementsAre(4, 0, 0, 0, 14, 0, 0, 0));
}

TEST(PackedPlane, EndsBeforeAChannelWhoseLaneIsTaken) {
    ChannelSet channels(channel("mixed.id"));
    for (const char* const name : {"mixed.red", "mixed.alpha"}) channels += channel(name);
    const ImagePlane plane = makePlane(channels, true);
    const PackedPlane first(plane, plane.bounds(), 0);
    EXPECT_EQ(first.componentCount(), 1);
    EXPECT_THAT(pixels(first, 2), ElementsAre(1, 0, 0, 0, 11, 0, 0, 0));
    const PackedPlane second(plane, plane.bounds(), 1);
    EXPECT_EQ(second.componentCount(), 2);
    EXPECT_THAT(pixels(second, 2), ElementsAre(2, 0, 0, 3, 12, 0, 0, 13));
}

TEST(PackedPlane, IsBlackOutsideThePlane) {
    const PackedPlane packed(makePlane(Chan_Z, true), Box(-1, 0, 2, 2), 0);
    EXPECT_THAT(pixels(packed, 6),
                ElementsAre(0, 0, 0, 0, 1, 0, 0, 0, 11, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0));
}

TEST(PackedPlane, UnpacksToWhereThePixelsCameFrom) {
    ImagePlane plane = makePlane(Mask_RGB, false);
    const PackedPlane packed(plane, Box(-1, 0, 2, 2), 0);
    std::vector<float> doubled = pixels(packed, 6);
    for (float& value : doubled) value *= 2;
    packed.unpack(doubled.data(), plane);
    EXPECT_THAT(std::vector<float>(plane.readable(), plane.readable() + 6), ElementsAre(2, 22, 4, 24, 6, 26));
}

TEST(PackedPlane, StartsAtTheGivenComponent) {
    const PackedPlane packed(makePlane(Mask_RGB, true), Box(0, 0, 2, 1), 2);
    EXPECT_THAT(pixels(packed, 2), ElementsAre(0, 0, 3, 0, 0, 0, 13, 0)) << "blue in its lane";
}
