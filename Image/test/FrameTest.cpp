#include "Frame.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

namespace {

using namespace Image;
using testing::ElementsAre;

Part partWith(const std::vector<Channel>& channels) {
    Part part;
    part.dataWindow = {-3, -2, 4, 5};
    part.channels = channels;
    part.layOutPlanes();
    return part;
}

Channel channel(const std::string& name, PixelType type = PixelType::Half, int sampling = 1) {
    Channel made;
    made.name = name;
    made.type = type;
    made.xSampling = made.ySampling = sampling;
    return made;
}

/// "plane.component" of every channel.
std::vector<std::string> places(const Part& part) {
    std::vector<std::string> result;
    for (const Channel& each : part.channels)
        result.push_back(each.name + " " + std::to_string(each.plane) + "." + std::to_string(each.component));
    return result;
}

TEST(Frame, InterleavesRgbaInThisOrderWhateverTheFilesOrderIs) {
    EXPECT_THAT(places(partWith({channel("A"), channel("B"), channel("G"), channel("R")})),
                ElementsAre("A 0.3", "B 0.2", "G 0.1", "R 0.0"));
}

TEST(Frame, PutsEveryLayerIntoPlanesOfItsOwn) {
    EXPECT_THAT(places(partWith({channel("R"), channel("beauty.R"), channel("beauty.G"), channel("a.beauty.R")})),
                ElementsAre("R 0.0", "beauty.R 1.0", "beauty.G 1.1", "a.beauty.R 2.0"));
}

TEST(Frame, KeepsColourApartFromTheLayersOtherChannels) {
    EXPECT_THAT(places(partWith({channel("R"), channel("Z"), channel("u")})), ElementsAre("R 0.0", "Z 1.0", "u 1.1"));
}

TEST(Frame, SplitsALayerOfMixedTypes) {
    EXPECT_THAT(places(partWith({channel("A", PixelType::Float), channel("R"), channel("id", PixelType::UInt32)})),
                ElementsAre("A 0.0", "R 1.0", "id 2.0"));
}

TEST(Frame, PacksOtherChannelsFourAtATime) {
    EXPECT_THAT(places(partWith({channel("x.a1"), channel("x.a2"), channel("x.a3"), channel("x.a4"), channel("x.a5")})),
                ElementsAre("x.a1 0.0", "x.a2 0.1", "x.a3 0.2", "x.a4 0.3", "x.a5 1.0"));
}

TEST(Frame, GivesSubSampledChannelsAsManySamplesAsTheirCoordinatesDivide) {
    const Part part = partWith({channel("Y"), channel("RY", PixelType::Half, 2)});
    EXPECT_EQ(part.planes[0].width, 8u);
    EXPECT_EQ(part.planes[1].width, 4u) << "-2 0 2 4";
    EXPECT_EQ(part.planes[1].height, 4u) << "-2 0 2 4";
}

TEST(Frame, KeepsItsMemoryWhenASmallerFrameFollows) {
    Part part = partWith({channel("R")});
    part.allocatePixels();
    const std::uint8_t* memory = part.planes[0].pixels.data();
    part.dataWindow = {0, 0, 1, 1};
    part.layOutPlanes();
    part.allocatePixels();
    EXPECT_EQ(part.planes[0].pixels.data(), memory);
    EXPECT_EQ(part.planes[0].pixels.size(), 8u);
}

TEST(Frame, ConvertsIntegersToTheUnitRangeAndBack) {
    const std::uint8_t bytes[3]{0, 51, 255};
    float floats[3];
    samplesToFloat(PixelType::UInt8, bytes, floats, 3);
    EXPECT_THAT(floats, ElementsAre(0.0f, testing::FloatEq(0.2f), 1.0f));
    std::uint16_t words[3];
    samplesFromFloat(PixelType::UInt16, floats, words, 3);
    EXPECT_THAT(words, ElementsAre(0, 13107, 65535));
}

TEST(Frame, ClampsWhatAnIntegerCannotHold) {
    const float floats[4]{-1.0f, 2.0f, std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity()};
    std::uint8_t bytes[4];
    samplesFromFloat(PixelType::UInt8, floats, bytes, 4);
    EXPECT_THAT(bytes, ElementsAre(0, 255, 0, 255));
    std::uint32_t ids[4];
    samplesFromFloat(PixelType::UInt32, floats, ids, 4);
    EXPECT_THAT(ids, ElementsAre(0u, 2u, 0u, 4294967295u));
}

TEST(Frame, ReplacesAnAttributeInItsPlace) {
    Part part;
    part.setAttribute({"a", "string", "1"});
    part.setAttribute({"b", "string", "2"});
    part.setAttribute({"a", "string", "3"});
    EXPECT_THAT(part.attributes, ElementsAre(Attribute{"a", "string", "3"}, Attribute{"b", "string", "2"}));
}

} // namespace
