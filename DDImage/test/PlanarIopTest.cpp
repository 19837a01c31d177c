#include "DDImage/PlanarIop.h"

#include "TestChain.h"

#include <gtest/gtest.h>

using namespace DD::Image;

namespace {

std::vector<float> pixels(const ImagePlane& plane) {
    return std::vector<float>(plane.readable(), plane.readable() + plane.usage() / sizeof(float));
}

} // namespace

TEST(PlanarIop, HasTheBoxOfItsInfoAsOutputBoxAtAnyMoment) {
    TestChain chain;
    Box before;
    Box after;
    chain.op->onValidate = [&](TestOp& op) {
        before = op.getOutputBox();
        op.info_.set(-5, -5, 9, 9);
        after = op.getOutputBox();
    };
    chain.graph.validate(chain.op);
    EXPECT_EQ(before, chain.source->box);
    EXPECT_EQ(after, Box(-5, -5, 9, 9));
}

TEST(PlanarIop, RendersAWholePackedLayerOverItsBoxWhenOnlyRedIsAsked) {
    TestChain chain;
    ImagePlane plane(Box(1, 0, 2, 1), false, Mask_Red);
    ASSERT_TRUE(chain.graph.render(chain.op, plane));
    ASSERT_EQ(chain.op->stripes.size(), 1u);
    EXPECT_EQ(chain.op->stripes[0].bounds(), chain.source->box);
    EXPECT_EQ(chain.op->stripes[0].channels(), ChannelSet(Mask_RGBA));
    EXPECT_TRUE(chain.op->stripes[0].packed());
    EXPECT_EQ(pixels(plane), (std::vector<float>{TestSource::value(1001, Chan_Red)}));
}

TEST(PlanarIop, LeavesTheShapeOfTheAskersPlane) {
    TestChain chain;
    ImagePlane plane(Box(1, 0, 2, 1), false, Mask_Red);
    chain.graph.render(chain.op, plane);
    EXPECT_EQ(plane.bounds(), Box(1, 0, 2, 1));
    EXPECT_EQ(plane.channels(), ChannelSet(Mask_Red));
    EXPECT_FALSE(plane.packed());
}

TEST(PlanarIop, RendersStraightIntoAPlaneOfTheRightShape) {
    TestChain chain;
    ImagePlane plane(chain.source->box, true, Mask_RGBA);
    plane.makeWritable();
    const float* const floats = plane.readable();
    ASSERT_TRUE(chain.graph.render(chain.op, plane));
    EXPECT_EQ(plane.readable(), floats);
    EXPECT_EQ(chain.op->stripes[0].readable(), floats);
}

TEST(PlanarIop, RendersEachLayerInACallOfItsOwn) {
    TestChain chain;
    chain.source->channels += Chan_Z;
    ImagePlane plane(chain.source->box, true, chain.source->channels);
    ASSERT_TRUE(chain.graph.render(chain.op, plane));
    ASSERT_EQ(chain.op->stripes.size(), 2u);
    EXPECT_EQ(chain.op->stripes[1].channels(), ChannelSet(Chan_Z));
    EXPECT_EQ(chain.op->stripes[1].nComps(), 1);
    EXPECT_EQ(plane.at(3, 1, 4), TestSource::value(1001, Chan_Z));
}

TEST(PlanarIop, RendersALayerOfThreeChannelsWithThreeComponents) {
    TestChain chain;
    for (const char* name : {"normal.x", "normal.y", "normal.z"}) chain.source->channels += channel(name);
    ImagePlane plane(chain.source->box, true, channel("normal.y"));
    ASSERT_TRUE(chain.graph.render(chain.op, plane));
    EXPECT_EQ(chain.op->stripes[0].usage(), 4u * 2 * 3 * 4);
    EXPECT_EQ(plane.at(0, 0, 0), TestSource::value(1001, channel("normal.y")));
}

TEST(PlanarIop, RendersColourWithFourChannelsThoughTheClipHasThree) {
    TestChain chain;
    chain.source->channels = Mask_RGB;
    ImagePlane plane(chain.source->box, true, Mask_RGB);
    ASSERT_TRUE(chain.graph.render(chain.op, plane));
    EXPECT_EQ(chain.op->stripes[0].channels(), ChannelSet(Mask_RGBA));
    EXPECT_EQ(chain.op->stripes[0].at(0, 0, 3), 0) << "a missing channel is black";
}

TEST(PlanarIop, IsBlackInChannelsThatItDoesNotPutOut) {
    TestChain chain;
    chain.source->channels += Chan_Z;
    chain.op->onValidate = [](TestOp& op) { op.set_out_channels(Mask_RGBA); };
    ImagePlane plane(chain.source->box, true, chain.source->channels);
    ASSERT_TRUE(chain.graph.render(chain.op, plane));
    EXPECT_EQ(chain.op->stripes.size(), 1u);
    EXPECT_EQ(plane.at(0, 0, 0), TestSource::value(1001, Chan_Red));
    EXPECT_EQ(plane.at(0, 0, 4), 0);
}

TEST(PlanarIop, IsBlackOutsideItsBox) {
    TestChain chain;
    chain.source->box = Box(0, 0, 1, 1);
    ImagePlane plane(Box(-1, 0, 2, 1), true, Mask_Red);
    ASSERT_TRUE(chain.graph.render(chain.op, plane));
    EXPECT_EQ(pixels(plane), (std::vector<float>{0, TestSource::value(1001, Chan_Red), 0}));
}

TEST(PlanarIop, DoesNotTouchFloatsThatTheAskerShares) {
    TestChain chain;
    ImagePlane plane(Box(0, 0, 2, 1), true, Mask_Red);
    plane.makeWritable();
    const ImagePlane shared = plane;
    ASSERT_TRUE(chain.graph.render(chain.op, plane));
    EXPECT_EQ(pixels(shared), (std::vector<float>{0, 0}));
}

TEST(PlanarIop, RequestsTheSameFromItsFirstInput) {
    TestChain chain;
    RequestOutput requests;
    chain.op->getRequests(Box(1, 2, 3, 4), Mask_RGB, 5, requests);
    ASSERT_EQ(requests.size(), 1u);
    EXPECT_EQ(requests[0].op, chain.read);
    EXPECT_EQ(requests[0].box, Box(1, 2, 3, 4));
    EXPECT_EQ(requests[0].channels, ChannelSet(Mask_RGB));
    EXPECT_EQ(requests[0].count, 5);
}

TEST(PlanarI, PrefersPackedAsItsValueOne) { EXPECT_EQ(PlanarI::ePackedPreferencePacked, 1); }
