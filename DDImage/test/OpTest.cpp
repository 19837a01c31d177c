#include "DDImage/Black.h"
#include "TestChain.h"

#include <gtest/gtest.h>

using namespace DD::Image;

TEST(Op, HasNoInputBeyondItsLast) {
    TestChain chain;
    EXPECT_EQ(chain.op->Op::input(2), nullptr);
    EXPECT_EQ(chain.op->Op::input(-1), nullptr);
}

TEST(Op, ThatReadsOrStandsInHasNoInputs) {
    TestChain chain;
    EXPECT_EQ(chain.read->Op::input(0), nullptr);
    EXPECT_EQ(Iop::default_input(OutputContext())->Op::input(0), nullptr);
}

TEST(Op, IsValidatedOnceUntilSomethingChanges) {
    TestChain chain;
    chain.graph.validate(chain.op);
    chain.graph.validate(chain.op);
    EXPECT_EQ(chain.op->validations, 1);
}

TEST(Op, IsValidatedAgainWhenItsHashDiffers) {
    TestChain chain;
    chain.graph.validate(chain.op);
    chain.op->salt = 1;
    chain.graph.validate(chain.op);
    EXPECT_EQ(chain.op->validations, 2);
}

TEST(Op, IsValidatedForRealAfterACheaperPass) {
    TestChain chain;
    chain.op->validate(false);
    chain.op->validate(true);
    EXPECT_EQ(chain.op->validations, 2);
}

TEST(Op, HashesItsKnobs) {
    TestChain chain;
    chain.graph.validate(chain.op);
    const Hash before = chain.op->hash();
    chain.op->knob("path")->set_text("/a.olcf");
    chain.graph.validate(chain.op);
    EXPECT_NE(chain.op->hash(), before);
}

TEST(Op, HashesItsInputs) {
    TestChain chain;
    chain.graph.validate(chain.op);
    const Hash before = chain.op->hash();
    chain.read->setFilename("/clips/B001.exr");
    chain.graph.validate(chain.op);
    EXPECT_NE(chain.op->hash(), before);
}

TEST(Op, HashesItsFrame) {
    TestChain chain;
    chain.graph.validate(chain.op);
    const Hash before = chain.op->hash();
    chain.graph.setFrame(1002);
    chain.graph.validate(chain.op);
    EXPECT_NE(chain.op->hash(), before);
}

TEST(Op, DoesNotHashKnobsThatDoNotConcernTheImage) {
    TestChain chain;
    chain.op->knob("path")->set_flag(Knob::NO_RERENDER);
    chain.graph.validate(chain.op);
    const Hash before = chain.op->hash();
    chain.op->knob("path")->set_text("/a.olcf");
    chain.graph.validate(chain.op);
    EXPECT_EQ(chain.op->hash(), before);
}

TEST(Op, StaysAbortedUntilTheNextEvaluationFromTheTop) {
    TestChain chain;
    chain.op->abort();
    chain.op->validate();
    EXPECT_TRUE(chain.op->aborted()) << "validation as such does not clear it";
    EXPECT_TRUE(chain.graph.validate(chain.op));
    EXPECT_FALSE(chain.op->aborted());
}

TEST(Op, IsAbortedWhenOneUpstreamIs) {
    TestChain chain;
    chain.read->abort();
    EXPECT_TRUE(chain.op->aborted());
}

TEST(Op, AbortedMakesNoPixels) {
    TestChain chain;
    chain.graph.validate(chain.op);
    chain.op->abort();
    ImagePlane plane(chain.op->info().box(), true, Mask_RGBA);
    chain.op->fetchPlane(plane);
    EXPECT_EQ(plane.usage(), 0u);
}

TEST(Op, FormatsItsErrorLikePrintf) {
    TestChain chain;
    chain.op->error("%d %% of %s", 5, "100");
    EXPECT_EQ(chain.graph.errorText(chain.op), "5 % of 100");
}

TEST(Op, KeepsAPercentSignGivenAsArgument) {
    TestChain chain;
    chain.op->error("%s", "Value %1% can not be represented in the target integer type.");
    EXPECT_EQ(chain.graph.errorText(chain.op), "Value %1% can not be represented in the target integer type.");
}

TEST(Op, IsInErrorWhenOneUpstreamIs) {
    TestChain chain;
    chain.read->error("lost");
    EXPECT_TRUE(chain.op->hasError());
    EXPECT_TRUE(chain.op->aborted()) << "there is nothing to work on";
}

TEST(Op, InErrorIsNotAbortedItself) {
    TestChain chain;
    chain.op->error("mine");
    EXPECT_FALSE(chain.op->aborted());
}

TEST(Op, PassesOnTheMetadataOfItsFirstInput) {
    TestChain chain;
    EXPECT_EQ(chain.op->fetchMetaData(nullptr).getString("input/timecode"), "01:00:00:00");
}

TEST(Op, WithoutInputsHasNoMetadata) {
    EXPECT_EQ(Iop::default_input(OutputContext())->fetchMetaData(nullptr).size(), 0u);
}
