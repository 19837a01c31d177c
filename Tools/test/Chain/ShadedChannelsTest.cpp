#include "Chain/ShadedChannels.h"

#include <gtest/gtest.h>

#include <memory>

#include "DDImage/ImagePlane.h"
#include "DDImage/IopInfo.h"
#include "DDImage/Substitute/Graph.h"
#include "DDImage/Substitute/ReadSource.h"

namespace Tools {
namespace {

using namespace DD::Image;

const Channel z = channel("beauty.z");

/// A picture of one value everywhere, which counts how often it is asked for pixels.
class ConstantSource : public ReadSource {
public:
    explicit ConstantSource(float value) : m_value(value) {}

    void fillInfo(double, IopInfo& info) override {
        const Format format(2, 1, 1.0);
        info.format(format);
        info.full_size_format(format);
        info.setBox(Box(0, 0, 2, 1));
        ChannelSet channels = Mask_RGBA;
        for (const Channel each : {Chan_Z, channel("beauty.red"), z}) channels += each;
        info.channels(channels);
    }
    void fillMetaData(double, MetaData::Bundle&) override {}
    void fillPlane(double, ImagePlane& plane) override {
        ++count;
        for (int x = 0; x < 2; ++x)
            for (int component = 0; component < plane.nComps(); ++component)
                plane.writableAt(x, 0, component) = m_value;
        floats = plane.readable();
    }

    int count = 0;
    const float* floats = nullptr; ///< of the last plane

private:
    float m_value;
};

class ShadedChannelsTest : public testing::Test {
protected:
    ShadedChannelsTest() {
        Read* const reads[] = {graph.createRead(), graph.createRead()};
        reads[0]->setSource(shading);
        reads[1]->setSource(original);
        for (int i = 0; i < 2; ++i) graph.connect(op, i, reads[i]);
        ChannelSet shaded = Mask_RGB;
        shaded += channel("beauty.red");
        ChannelSet unshaded(Chan_Z);
        unshaded += z;
        op->setChannels(shaded, unshaded);
    }

    ImagePlane rendered(const ChannelSet& channels) {
        EXPECT_TRUE(graph.validate(op));
        ImagePlane plane(Box(0, 0, 2, 1), true, channels);
        EXPECT_TRUE(graph.fetch(op, plane));
        return plane;
    }

    Graph graph;
    ShadedChannels* op = dynamic_cast<ShadedChannels*>(graph.create("ShadedChannels"));
    std::shared_ptr<ConstantSource> shading = std::make_shared<ConstantSource>(2.0f);
    std::shared_ptr<ConstantSource> original = std::make_shared<ConstantSource>(1.0f);
};

TEST_F(ShadedChannelsTest, HandTheColoursAndTheirAlphaOnWithoutACopy) {
    const ImagePlane plane = rendered(Mask_RGBA);
    EXPECT_EQ(plane.readable(), shading->floats);
    EXPECT_EQ(original->count, 0);
}

TEST_F(ShadedChannelsTest, TakeALayerWithoutColourPastTheShadingNode) {
    EXPECT_EQ(rendered(Chan_Z).at(1, 0, 0), 1.0f);
    EXPECT_EQ(shading->count, 0);
}

TEST_F(ShadedChannelsTest, MixTheChannelsOfALayer) {
    ChannelSet channels(channel("beauty.red"));
    channels += z;
    const ImagePlane plane = rendered(channels);
    EXPECT_EQ(plane.at(1, 0, plane.chanNo(channel("beauty.red"))), 2.0f);
    EXPECT_EQ(plane.at(1, 0, plane.chanNo(z)), 1.0f);
}

} // namespace
} // namespace Tools
