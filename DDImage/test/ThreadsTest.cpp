#include "TestChain.h"

#include <gtest/gtest.h>

#include <thread>

using namespace DD::Image;

namespace {

void onThreads(int count, const std::function<void(int)>& action) {
    std::vector<std::thread> threads;
    for (int i = 0; i < count; ++i) threads.emplace_back(action, i);
    for (std::thread& thread : threads) thread.join();
}

} // namespace

TEST(Threads, FetchPlanesOfOneOpAtOnce) {
    TestChain chain;
    chain.source->channels += Chan_Z;
    ASSERT_TRUE(chain.graph.validate(chain.op));
    std::vector<float> seen(8);
    onThreads(8, [&](int i) {
        ImagePlane plane(Box(0, 0, 4, 2), true, i % 2 ? ChannelSet(Chan_Z) : ChannelSet(Mask_RGBA));
        chain.graph.fetch(chain.op, plane);
        chain.op->fetchMetaData("input/frame");
        seen[static_cast<std::size_t>(i)] = plane.at(3, 1, 0);
    });
    const float red = TestSource::value(1001, Chan_Red);
    const float depth = TestSource::value(1001, Chan_Z);
    EXPECT_EQ(seen, (std::vector<float>{red, depth, red, depth, red, depth, red, depth}));
}

TEST(Threads, RunGraphsOfTheirOwn) {
    std::vector<int> isRendered(4);
    onThreads(4, [&](int i) {
        TestChain chain;
        const std::string name = "layer" + std::to_string(i) + ".x";
        chain.source->channels += channel(name.c_str());
        ImagePlane plane(Box(0, 0, 4, 2), true, channel(name.c_str()));
        isRendered[static_cast<std::size_t>(i)] = chain.graph.render(chain.op, plane);
    });
    EXPECT_EQ(isRendered, std::vector<int>(4, 1));
}

TEST(Threads, AbortAndFailWhileOthersFetch) {
    TestChain chain;
    ASSERT_TRUE(chain.graph.validate(chain.op));
    onThreads(4, [&](int i) {
        if (i == 0) chain.graph.abort();
        if (i == 1) chain.read->error("failure %d", i);
        ImagePlane plane(Box(0, 0, 4, 2), true, Mask_RGBA);
        chain.graph.fetch(chain.op, plane);
    });
    EXPECT_TRUE(chain.op->aborted());
    EXPECT_EQ(chain.graph.errorText(chain.op), "failure 1");
}

TEST(Threads, WriteToTheirOwnFloatsAfterSharing) {
    ImagePlane shared(Box(0, 0, 64, 64), true, Mask_RGBA);
    shared.makeWritable();
    std::vector<ImagePlane> copies(4, shared);
    onThreads(4, [&](int i) {
        ImagePlane& plane = copies[static_cast<std::size_t>(i)];
        plane.makeUnique();
        plane.makeWritable();
        plane.writableAt(0, 0, 0) = static_cast<float>(i + 1);
    });
    EXPECT_EQ(copies[3].at(0, 0, 0), 4);
    EXPECT_EQ(shared.at(0, 0, 0), 0);
}
