#include "DDImage/Substitute/Layers.h"

#include <gtest/gtest.h>

using namespace DD::Image;

namespace {

ChannelSet setOf(std::initializer_list<const char*> names) {
    ChannelSet set;
    for (const char* name : names) set += channel(name);
    return set;
}

} // namespace

TEST(Layers, AreOnePlaneEach) {
    ChannelSet channels = setOf({"normal.x", "normal.y", "normal.z", "depth.Z"});
    channels += Mask_RGBA;
    EXPECT_EQ(splitIntoLayers(channels),
              (std::vector<ChannelSet>{Mask_RGBA, Chan_Z, setOf({"normal.x", "normal.y", "normal.z"})}));
}

TEST(Layers, OfMoreThanFourChannelsTakeSeveralPlanes) {
    EXPECT_EQ(splitIntoLayers(setOf({"id.a", "id.b", "id.c", "id.d", "id.e"})),
              (std::vector<ChannelSet>{setOf({"id.a", "id.b", "id.c", "id.d"}), setOf({"id.e"})}));
}

TEST(Layers, AreCompletedFromWhatIsThere) {
    EXPECT_EQ(expandToLayers(setOf({"uv.u"}), setOf({"uv.u", "uv.v", "other.x"})), setOf({"uv.u", "uv.v"}));
}

TEST(Layers, OfColourAlwaysHaveFourChannels) { EXPECT_EQ(expandToLayers(Chan_Red, Mask_RGB), ChannelSet(Mask_RGBA)); }
