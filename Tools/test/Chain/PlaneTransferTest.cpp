#include "Chain/PlaneTransfer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <stdexcept>

#include "Chain/ClipSource.h"
#include "Support/FloatPicture.h"

namespace Tools {
namespace {

using DD::Image::Box;
using DD::Image::ImagePlane;
using Image::Window;

/// A part of float channels with the given data window in a display window of 4 × 3; sample = 100 × channel's place in
/// `names` + 10 × row in the file + column, both from the data window's top left.
Image::Part partOf(const std::vector<std::string>& names, const Window& dataWindow) {
    Image::Part part = floatPicture(dataWindow, {0, 0, 3, 2}, names);
    for (std::size_t c = 0; c < part.channels.size(); ++c) {
        Image::Plane& plane = part.planes[part.channels[c].plane];
        for (std::size_t y = 0; y < plane.height; ++y)
            for (std::size_t x = 0; x < plane.width; ++x) {
                const float value = static_cast<float>(100 * c + 10 * y + x);
                std::memcpy(plane.row(y) + (x * plane.components + part.channels[c].component) * sizeof(float), &value,
                            sizeof(float));
            }
    }
    return part;
}

float sampleOf(const Image::Part& part, std::size_t channel, std::size_t x, std::size_t y) {
    const Image::Plane& plane = part.planes[part.channels[channel].plane];
    float value = 0.0f;
    std::memcpy(&value, plane.row(y) + (x * plane.components + part.channels[channel].component) * sizeof(float),
                sizeof(float));
    return value;
}

/// A plane whose floats have held something else before.
ImagePlane usedPlane(const Box& box, bool packed, const DD::Image::ChannelSet& channels) {
    ImagePlane plane(box, packed, channels);
    plane.makeWritable();
    std::fill_n(plane.writable(), plane.usage() / sizeof(float), -1.0f);
    return plane;
}

/// One component's floats, the top row first.
std::string rowsOf(const ImagePlane& plane, int component) {
    std::string rows;
    for (int y = plane.bounds().t() - 1; y >= plane.bounds().y(); --y) {
        for (int x = plane.bounds().x(); x < plane.bounds().r(); ++x)
            rows += std::to_string(static_cast<int>(plane.at(x, y, component))) + " ";
        rows += "\n";
    }
    return rows;
}

TEST(HostBox, HasItsOriginAtTheDisplayWindowsBottomLeftAndGrowsUpwards) {
    EXPECT_EQ(hostBox({-2, -1, 5, 2}, {0, 0, 3, 2}), Box(-2, 0, 6, 4));
}

TEST(HostBox, DoesNotDependOnWhereTheDisplayWindowLies) {
    EXPECT_EQ(hostBox({98, 199, 105, 202}, {100, 200, 103, 202}), Box(-2, 0, 6, 4));
}

TEST(HostBox, RefusesAWindowThatSinglePrecisionCannotAddress) {
    EXPECT_THROW(hostBox({1 << 25, 0, (1 << 25) + 3, 2}, {0, 0, 3, 2}), std::runtime_error);
}

TEST(FileWindow, IsTheReverseOfHostBox) {
    const Window display{100, 200, 103, 202};
    const Window window{98, 199, 105, 202};
    EXPECT_EQ(fileWindow(hostBox(window, display), display), window);
}

TEST(FillPlane, PutsTheFilesTopRowAtTheTopAndBlackAround) {
    const Image::Part part = partOf({"R"}, {1, 1, 2, 2});
    ImagePlane plane = usedPlane(Box(0, 0, 4, 3), true, DD::Image::Mask_Red);
    fillPlane(plane, part, hostChannels(part), 1);
    EXPECT_EQ(rowsOf(plane, 0), "0 0 0 0 \n0 0 1 0 \n0 10 11 0 \n");
}

TEST(FillPlane, BlackensChannelsThatThePartDoesNotHave) {
    const Image::Part part = partOf({"R"}, {0, 0, 1, 1});
    for (const bool packed : {true, false}) {
        ImagePlane plane = usedPlane(Box(-1, 1, 3, 4), packed, DD::Image::Mask_RGB);
        fillPlane(plane, part, hostChannels(part), 1);
        EXPECT_EQ(rowsOf(plane, 0), "0 0 0 0 \n0 0 1 0 \n0 10 11 0 \n");
        EXPECT_EQ(rowsOf(plane, 1), "0 0 0 0 \n0 0 0 0 \n0 0 0 0 \n");
    }
}

TEST(FillPlane, IsBlackWhereThePartLiesElsewhere) {
    const Image::Part part = partOf({"R"}, {0, 0, 3, 2});
    ImagePlane plane = usedPlane(Box(10, 0, 12, 2), true, DD::Image::Mask_Red);
    fillPlane(plane, part, hostChannels(part), 1);
    EXPECT_EQ(rowsOf(plane, 0), "0 0 \n0 0 \n");
}

TEST(FillPlane, FillsALargePlaneOfHalfsAsItFillsASmallOne) {
    // Beyond the size from which floats are written past the caches.
    Image::Part part;
    part.displayWindow = part.dataWindow = {0, 0, 2046, 1088};
    for (const char* const name : {"R", "G", "B", "A"}) part.channels.push_back({.name = name});
    part.layOutPlanes();
    part.allocatePixels();
    std::uint16_t* const halfs = reinterpret_cast<std::uint16_t*>(part.planes[0].pixels.data());
    const std::size_t count = 2047 * 1089 * 4;
    for (std::size_t i = 0; i < count; ++i) halfs[i] = static_cast<std::uint16_t>(i * 7919 % 0x7c00);
    ImagePlane plane = usedPlane(Box(-3, -1, 2051, 1090), true, DD::Image::Mask_RGBA);
    fillPlane(plane, part, hostChannels(part), 2);
    std::vector<float> expected(2054 * 1091 * 4, 0.0f);
    for (std::size_t y = 0; y < 1089; ++y)
        Image::samplesToFloat(Image::PixelType::Half, halfs + y * 2047 * 4, &expected[((1089 - y) * 2054 + 3) * 4],
                              2047 * 4);
    EXPECT_EQ(std::memcmp(plane.readable(), expected.data(), expected.size() * sizeof(float)), 0);
}

TEST(FillPlane, FindsEachChannelWhateverTheOrderInTheFile) {
    const Image::Part part = partOf({"A", "B", "G", "R"}, {0, 0, 3, 2});
    ImagePlane plane = usedPlane(Box(0, 0, 4, 3), true, DD::Image::Mask_RGBA);
    fillPlane(plane, part, hostChannels(part), 1);
    EXPECT_EQ((std::vector<float>{plane.at(3, 2, 0), plane.at(3, 2, 1), plane.at(3, 2, 2), plane.at(3, 2, 3)}),
              (std::vector<float>{303, 203, 103, 3}));
}

TEST(FillPlane, FillsAnUnpackedPlaneWithTheSamePixels) {
    const Image::Part part = partOf({"R", "G", "B"}, {0, 0, 3, 2});
    ImagePlane plane = usedPlane(Box(-1, -1, 5, 4), false, DD::Image::Mask_RGB);
    fillPlane(plane, part, hostChannels(part), 2);
    EXPECT_EQ(plane.at(2, 1, 1), 112.0f);
}

TEST(FillPlane, RefusesChannelsWithFewerSamplesThanPixels) {
    Image::Part part = partOf({"Y"}, {0, 0, 3, 2});
    part.channels[0].xSampling = 2;
    ImagePlane plane = usedPlane(Box(0, 0, 4, 3), true, DD::Image::Mask_Red);
    EXPECT_THROW(fillPlane(plane, part, hostChannels(part), 1), std::runtime_error);
}

TEST(StorePlane, GivesBackWhatFillPlaneTook) {
    const Image::Part part = partOf({"B", "G", "R", "depth.Z"}, {-1, 0, 3, 3});
    Image::Part stored = partOf({"B", "G", "R", "depth.Z"}, {-1, 0, 3, 3});
    for (Image::Plane& plane : stored.planes) std::memset(plane.pixels.data(), 0, plane.pixels.size());
    const auto channels = hostChannels(part);
    for (const DD::Image::ChannelSet& layer :
         {DD::Image::ChannelSet(DD::Image::Mask_RGBA), DD::Image::ChannelSet(DD::Image::channel("depth.Z"))}) {
        ImagePlane plane = usedPlane(hostBox(part.dataWindow, part.displayWindow), true, layer);
        fillPlane(plane, part, channels, 1);
        storePlane(plane, stored, channels, 1);
    }
    for (std::size_t c = 0; c < part.channels.size(); ++c)
        for (std::size_t y = 0; y < 4; ++y)
            for (std::size_t x = 0; x < 5; ++x) EXPECT_EQ(sampleOf(stored, c, x, y), sampleOf(part, c, x, y));
}

TEST(StorePlane, CutsWhatLiesOutsideThePartsWindow) {
    Image::Part part = partOf({"R"}, {0, 0, 3, 2});
    ImagePlane plane = usedPlane(Box(-5, -5, 9, 8), true, DD::Image::Mask_Red);
    plane.writableAt(0, 2, 0) = 7.0f; // the format's top left pixel
    storePlane(plane, part, hostChannels(part), 1);
    EXPECT_EQ(sampleOf(part, 0, 0, 0), 7.0f);
}

class ValuesBeyondIntegers : public testing::Test {
protected:
    bool exceeds(float value, int x = 1, int y = 1) {
        plane.clear();
        plane.writableAt(x, y, 0) = value;
        return exceedsIntegers(plane, partOf({"R", "G", "B"}, {0, 0, 3, 2}), 2);
    }

    ImagePlane plane = usedPlane(Box(-1, -1, 5, 4), true, DD::Image::Mask_RGB);
};

TEST_F(ValuesBeyondIntegers, AreThoseBelow0AndAbove1AndWhatIsNoNumber) {
    EXPECT_EQ((std::vector<bool>{exceeds(-0.001f), exceeds(1.001f), exceeds(std::nanf(""))}),
              (std::vector<bool>{true, true, true}));
}

TEST_F(ValuesBeyondIntegers, AreNotThoseThatRoundTo0Or1) {
    EXPECT_EQ((std::vector<bool>{exceeds(0.0f), exceeds(1.0f), exceeds(-1e-6f), exceeds(1.000001f)}),
              (std::vector<bool>{false, false, false, false}));
}

TEST_F(ValuesBeyondIntegers, CountWithinThePictureAlone) {
    EXPECT_EQ((std::vector<bool>{exceeds(2.0f, 3, 2), exceeds(2.0f, 4, 2), exceeds(2.0f, 3, 3)}),
              (std::vector<bool>{true, false, false}));
}

} // namespace
} // namespace Tools
