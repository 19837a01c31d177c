#include "DDImage/ChannelSet.h"

#include <gtest/gtest.h>

#include <string>

using namespace DD::Image;

TEST(Channel, OfRgbaAndDepthHaveFixedNames) {
    EXPECT_EQ(channel("rgba.red"), Chan_Red);
    EXPECT_EQ(channel("depth.Z"), Chan_Z);
    EXPECT_STREQ(getName(Chan_Alpha), "rgba.alpha");
}

TEST(Channel, IsTheSameForTheSameName) { EXPECT_EQ(channel("beauty.red"), channel("beauty.red")); }

TEST(Channel, BelongsToTheLayerBeforeTheLastDot) {
    EXPECT_STREQ(getLayerName(channel("left.beauty.red")), "left.beauty");
}

TEST(ChannelSet, HoldsHundredsOfChannels) {
    ChannelSet set;
    for (int i = 0; i < 500; ++i) set += channel(("aov" + std::to_string(i) + ".x").c_str());
    EXPECT_EQ(set.size(), 500u);
    EXPECT_TRUE(set.contains(channel("aov499.x")));
}

TEST(ChannelSet, GoesThroughItsChannelsInAscendingOrder) {
    const Channel far = channel("far.away");
    ChannelSet set(far);
    set += Mask_RGB;
    std::vector<Channel> seen;
    for (Channel z = set.first(); z != Chan_Black; z = set.next(z)) seen.push_back(z);
    EXPECT_EQ(seen, (std::vector<Channel>{Chan_Red, Chan_Green, Chan_Blue, far}));
}

TEST(ChannelSet, OfAllHoldsAChannelNamedLater) {
    const ChannelSet all = Mask_All;
    EXPECT_TRUE(all.contains(channel("named.later")));
}

TEST(ChannelSet, OfAllIntersectsToTheOtherSet) {
    ChannelSet set = Mask_All;
    set &= Mask_RGBA;
    EXPECT_EQ(set, ChannelSet(Mask_RGBA));
}

TEST(ChannelSet, OfAllLessOneChannelHoldsTheOthers) {
    ChannelSet set = Mask_All;
    set -= Chan_Green;
    EXPECT_FALSE(set.contains(Chan_Green));
    EXPECT_TRUE(set.contains(channel("some.other")));
    set += Chan_Green;
    EXPECT_EQ(set, ChannelSet(Mask_All));
}

TEST(ChannelSet, IsEmptyAfterItsChannelsAreTakenAway) {
    ChannelSet set = Mask_RGBA;
    set -= Mask_RGBA;
    EXPECT_TRUE(set.empty());
    EXPECT_EQ(set, ChannelSet());
    EXPECT_FALSE(set);
}

TEST(ChannelSet, NeverHoldsTheBlackChannel) {
    ChannelSet set;
    set += Chan_Black;
    EXPECT_FALSE(set.contains(Chan_Black));
    EXPECT_TRUE(set.empty());
}
