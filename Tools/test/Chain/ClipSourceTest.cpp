#include "Chain/ClipSource.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace Tools {
namespace {

std::vector<std::string> hostNames(const std::vector<std::string>& namesInFile) {
    Image::Part part;
    for (const std::string& name : namesInFile) {
        Image::Channel channel;
        channel.name = name;
        part.channels.push_back(channel);
    }
    std::vector<std::string> names;
    for (const DD::Image::Channel channel : hostChannels(part)) names.push_back(DD::Image::getName(channel));
    return names;
}

using Names = std::vector<std::string>;

TEST(HostChannels, CallsBareColoursTheRgbaLayer) {
    EXPECT_EQ(hostNames({"A", "B", "G", "R"}), (Names{"rgba.alpha", "rgba.blue", "rgba.green", "rgba.red"}));
}

TEST(HostChannels, SpellsTheColoursOfALayerOut) {
    EXPECT_EQ(hostNames({"beauty.B", "beauty.G", "beauty.R", "N.X"}),
              (Names{"beauty.blue", "beauty.green", "beauty.red", "N.X"}));
}

TEST(HostChannels, SpellsColoursInSmallLettersOutAsWell) {
    EXPECT_EQ(hostNames({"b", "r", "beauty.a", "beauty.g"}),
              (Names{"rgba.blue", "rgba.red", "beauty.alpha", "beauty.green"}));
}

TEST(HostChannels, TakesLuminanceAloneForColour) { EXPECT_EQ(hostNames({"Y"}), Names{"rgba.red"}); }

TEST(HostChannels, LeavesLuminanceBesideColourInALayerOfItsOwn) {
    EXPECT_EQ(hostNames({"R", "Y"}), (Names{"rgba.red", "other.Y"}));
}

TEST(HostChannels, KnowsDepthAndPutsOtherBareNamesIntoOneLayer) {
    EXPECT_EQ(hostNames({"Z", "id"}), (Names{"depth.Z", "other.id"}));
}

TEST(HostChannels, LosesNoneOfTwoChannelsThatTheHostCallsAlike) {
    EXPECT_EQ(hostNames({"R", "rgba.R"}), (Names{"rgba.red", "rgba.red_"}));
}

// A layer's pixels then lie in the host as red, green, blue, alpha, as its own rgba layer does and as the nodes take
// them without another copy.
TEST(HostChannels, NumbersTheColoursOfALayerInTheirOrderWhateverTheFilesOrderIs) {
    Image::Part part;
    for (const char* const name : {"numbered.A", "numbered.B", "numbered.G", "numbered.R"}) {
        Image::Channel channel;
        channel.name = name;
        part.channels.push_back(channel);
    }
    std::vector<DD::Image::Channel> channels = hostChannels(part);
    std::sort(channels.begin(), channels.end());
    Names names;
    for (const DD::Image::Channel channel : channels) names.push_back(DD::Image::getName(channel));
    EXPECT_EQ(names, (Names{"numbered.red", "numbered.green", "numbered.blue", "numbered.alpha"}));
}

} // namespace
} // namespace Tools
