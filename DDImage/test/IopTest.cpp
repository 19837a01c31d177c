#include "DDImage/Iop.h"

#include "DDImage/Black.h"
#include "TestChain.h"

#include <gtest/gtest.h>

using namespace DD::Image;

TEST(Iop, HasAPlaceholderWhereNothingIsWired) {
    TestChain chain;
    EXPECT_EQ(chain.op->input(1), chain.op->default_input(1));
    EXPECT_EQ(chain.op->Op::input(1), chain.op->default_input(1));
    EXPECT_EQ(chain.op->node_input(1), nullptr);
}

TEST(Iop, HasOnePlaceholderForAllContexts) {
    OutputContext other;
    other.setFrame(7);
    EXPECT_EQ(Iop::default_input(OutputContext()), Iop::default_input(other));
}

TEST(Iop, HasABlackPlaceholderOfOnePixel) {
    Iop* placeholder = Iop::default_input(OutputContext());
    EXPECT_NE(dynamic_cast<Black*>(placeholder), nullptr);
    EXPECT_STREQ(placeholder->Class(), "Black");
    EXPECT_EQ(placeholder->info().box(), Box(0, 0, 1, 1));
}

TEST(Iop, FetchesBlackFromThePlaceholder) {
    ImagePlane plane(Box(0, 0, 1, 1), true, Mask_RGBA);
    Iop::default_input(OutputContext())->fetchPlane(plane);
    EXPECT_EQ(std::vector<float>(plane.readable(), plane.readable() + 4), std::vector<float>(4, 0.f));
}

TEST(Iop, TakesOverTheInfoOfItsFirstInput) {
    TestChain chain;
    chain.source->box = Box(-2, -1, 6, 3);
    chain.graph.validate(chain.op);
    EXPECT_EQ(chain.op->info().box(), Box(-2, -1, 6, 3));
    EXPECT_EQ(chain.op->format(), chain.source->format);
    EXPECT_EQ(chain.op->first_frame(), 1001);
}

TEST(Iop, PutsOutAllChannelsByItself) {
    TestChain chain;
    chain.graph.validate(chain.op);
    EXPECT_EQ(chain.op->out_channels(), ChannelSet(Mask_All));
}

TEST(Iop, ValidatesAllWiredInputs) {
    TestChain chain;
    Read* plate = chain.graph.createRead();
    auto source = std::make_shared<TestSource>();
    source->box = Box(0, 0, 9, 9);
    plate->setSource(source);
    chain.graph.connect(chain.op, 1, plate);
    chain.graph.validate(chain.op);
    EXPECT_EQ(plate->info().box(), Box(0, 0, 9, 9));
}

TEST(IopInfo, IsItselfTheBox) {
    IopInfo info;
    info.set(-1, -2, 3, 4);
    EXPECT_EQ(info.box(), Box(-1, -2, 3, 4));
    info.setBox(Box(0, 0, 5, 5));
    EXPECT_EQ(info.r(), 5);
}
