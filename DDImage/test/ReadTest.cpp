#include "DDImage/Read.h"

#include "TestChain.h"

#include <gtest/gtest.h>

#include <typeinfo>

using namespace DD::Image;

namespace {

class TimelineRead : public Read {
public:
    using Read::Read;
    const char* Class() const override { return "TimelineRead"; }
};

} // namespace

TEST(Read, HasItsOwnExactClass) {
    TestChain chain;
    const Op& op = *chain.op->Op::input(0);
    EXPECT_TRUE(typeid(op) == typeid(Read));
    EXPECT_STREQ(op.Class(), "Read");
}

TEST(Read, IsNotOfTheClassOfItsSubclass) {
    const TimelineRead timeline;
    const Op& op = timeline;
    EXPECT_NE(dynamic_cast<const Read*>(&op), nullptr);
    EXPECT_FALSE(typeid(op) == typeid(Read));
}

TEST(Read, HasNoFileNameUntilItIsGiven) {
    Read read;
    EXPECT_EQ(read.filename(), nullptr);
    read.setFilename("/clips/A001.mov");
    EXPECT_STREQ(read.filename(), "/clips/A001.mov");
}

TEST(Read, TellsFirstAndLastFrameOnceValidated) {
    TestChain chain;
    chain.graph.validate(chain.read);
    EXPECT_EQ(chain.read->first_frame(), 1001);
    EXPECT_EQ(chain.read->info().firstFrame(), 1001);
    EXPECT_EQ(chain.read->last_frame(), 1010);
}

TEST(Read, HasADictionaryPerFrame) {
    TestChain chain;
    EXPECT_EQ(chain.read->fetchMetaData("input/frame").getDouble("input/frame"), 1001);
    chain.graph.setFrame(1002);
    EXPECT_EQ(chain.read->fetchMetaData("input/frame").getDouble("input/frame"), 1002);
}

TEST(Read, ReadsTheDictionaryOnceAFrame) {
    TestChain chain;
    int reads = 0;
    chain.source->beforeEach = [&] { ++reads; };
    const MetaData::Bundle& first = chain.read->fetchMetaData("input/frame");
    const MetaData::Bundle& second = chain.read->fetchMetaData(nullptr);
    EXPECT_EQ(&first, &second);
    EXPECT_EQ(reads, 1);
}

TEST(Read, FillsTheAskersFloats) {
    TestChain chain;
    ImagePlane plane(Box(0, 0, 4, 2), true, Mask_RGBA);
    plane.makeWritable();
    const float* const floats = plane.readable();
    ASSERT_TRUE(chain.graph.render(chain.read, plane));
    EXPECT_EQ(plane.readable(), floats);
    EXPECT_EQ(plane.at(2, 1, 1), TestSource::value(1001, Chan_Green));
}

TEST(Read, IsBlackOutsideItsBoxThoughThePlaneHeldPixels) {
    TestChain chain;
    ImagePlane plane(Box(3, 0, 5, 1), true, Mask_Red);
    plane.makeWritable();
    plane.writableAt(4, 0, 0) = 77;
    ASSERT_TRUE(chain.graph.render(chain.read, plane));
    EXPECT_EQ(plane.at(3, 0, 0), TestSource::value(1001, Chan_Red));
    EXPECT_EQ(plane.at(4, 0, 0), 0);
}

TEST(Read, LeavesBlackToASourceThatFillsWholePlanes) {
    struct WholeSource : TestSource {
        bool fillsWholePlanes() const override { return true; }
    };
    Graph graph;
    Read* read = graph.createRead();
    read->setSource(std::make_shared<WholeSource>());
    ImagePlane plane(Box(-1, 0, 4, 2), true, Mask_RGBA);
    plane.makeWritable();
    plane.writableAt(-1, 0, 0) = 7.0f;
    const ImagePlane other = plane;
    ASSERT_TRUE(graph.render(read, plane));
    EXPECT_NE(plane.readable(), other.readable()) << "floats that others read are left to them";
    EXPECT_EQ(other.at(0, 0, 0), 0.0f);
    EXPECT_EQ(plane.at(0, 0, 0), TestSource::value(0, Chan_Red));
    plane.writableAt(-1, 0, 0) = 7.0f;
    ASSERT_TRUE(graph.render(read, plane));
    EXPECT_EQ(plane.at(-1, 0, 0), 7.0f) << "the source has not blackened it";
}

TEST(Read, TurnsWhatItsSourceThrowsIntoItsError) {
    TestChain chain;
    chain.source->beforeEach = [] { throw std::runtime_error("A001.exr is cut at 10 %."); };
    EXPECT_FALSE(chain.graph.validate(chain.op));
    EXPECT_EQ(chain.graph.errorText(chain.op), "A001.exr is cut at 10 %.");
}

TEST(Read, InErrorStopsThoseDownstream) {
    TestChain chain;
    bool isReached = false;
    chain.op->onValidate = [&](TestOp&) { isReached = true; };
    chain.source->beforeEach = [] { throw 1; };
    EXPECT_FALSE(chain.graph.validate(chain.op));
    EXPECT_FALSE(isReached);
}

TEST(Read, FailingOnPixelsFailsTheRender) {
    TestChain chain;
    chain.graph.validate(chain.op);
    chain.source->beforeEach = [] { throw std::runtime_error("no pixels"); };
    ImagePlane plane(chain.op->info().box(), true, Mask_RGBA);
    EXPECT_FALSE(chain.graph.fetch(chain.op, plane));
    EXPECT_EQ(chain.graph.errorText(chain.op), "no pixels");
}

TEST(Read, RecoversWhenItsSourceDoes) {
    TestChain chain;
    chain.source->beforeEach = [] { throw std::runtime_error("not there yet"); };
    chain.graph.validate(chain.op);
    chain.source->beforeEach = [] {};
    EXPECT_TRUE(chain.graph.validate(chain.op));
    EXPECT_EQ(chain.op->info().box(), chain.source->box);
    EXPECT_EQ(chain.graph.errorText(chain.op), "");
}

TEST(Read, WithoutAClipIsInError) {
    Graph graph;
    Read* read = graph.createRead();
    EXPECT_FALSE(graph.validate(read));
    EXPECT_EQ(graph.errorText(read), "The reader has no clip.");
}

TEST(Read, PassesOnFloatsThatItsSourceShares) {
    struct SharingSource : TestSource {
        ImagePlane decoded{Box(0, 0, 4, 2), true, Mask_RGBA};
        void fillPlane(double, ImagePlane& plane) override {
            RefCountedFloatBuffer floats = decoded.memory();
            plane.setMemory(floats);
        }
    };
    TestChain chain;
    auto source = std::make_shared<SharingSource>();
    source->decoded.makeWritable();
    chain.read->setSource(source);
    ImagePlane plane(Box(0, 0, 4, 2), true, Mask_RGBA);
    ASSERT_TRUE(chain.graph.render(chain.read, plane));
    EXPECT_EQ(plane.readable(), source->decoded.readable());
    EXPECT_EQ(plane.memory().refCount(), 2);
}
