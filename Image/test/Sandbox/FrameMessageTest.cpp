#include "Sandbox/FrameMessage.h"

#include <gtest/gtest.h>

#include <cstring>
#include <limits>

#include "Support/NoiseFrame.h"

using namespace Image;

namespace {

FrameMessage twoParts() {
    FrameMessage message;
    message.frameCount = 240;
    message.frame.format = "exr";
    message.frame.parts = {
        noisePart({-3, -2, 10, 8}, rgba()),
        noisePart({0, 0, 4, 4}, {namedChannel("id", PixelType::UInt32), namedChannel("Z", PixelType::Float)})};
    for (Part& part : message.frame.parts) part.displayWindow = {0, 0, 9, 9};
    Part& part = message.frame.parts[1];
    part.name = "ids";
    part.compression = "piz";
    part.lineOrder = LineOrder::DecreasingY;
    part.pixelAspectRatio = 2.0f;
    part.tileWidth = part.tileHeight = 32;
    part.channels[0].perceptuallyLinear = true;
    part.attributes = {{"owner", "string", std::string("a\0b", 3)}, {"empty", "opaque", ""}};
    return message;
}

std::string problem(const FrameMessage& message, const Limits& limits = {}) {
    try {
        FrameMessage::parse(message.bytes(), limits);
    } catch (const FrameMessageError& error) {
        return error.what();
    }
    return "(none)";
}

/// What is wrong with a message that is made wrong in one place.
template <typename Change>
std::string problemAfter(Change change) {
    FrameMessage message = twoParts();
    change(message, message.frame.parts[0]);
    return problem(message);
}

} // namespace

TEST(FrameMessage, KeepsEverythingButThePixels) {
    const FrameMessage sent = twoParts();
    const FrameMessage got = FrameMessage::parse(sent.bytes(), {});
    EXPECT_EQ(got.bytes(), sent.bytes());
    EXPECT_EQ(got.frameCount, 240);
    ASSERT_EQ(got.frame.parts.size(), 2u);
    const Part& part = got.frame.parts[1];
    EXPECT_EQ(part.attributes, sent.frame.parts[1].attributes);
    EXPECT_EQ(part.lineOrder, LineOrder::DecreasingY);
    EXPECT_EQ(part.channels[0].name, "id");
    EXPECT_TRUE(part.channels[0].perceptuallyLinear);
}

TEST(FrameMessage, LaysThePlanesOutAsTheyWereWithoutMemory) {
    const FrameMessage sent = twoParts();
    const FrameMessage got = FrameMessage::parse(sent.bytes(), {});
    ASSERT_EQ(got.frame.parts[0].planes.size(), sent.frame.parts[0].planes.size());
    EXPECT_EQ(got.frame.parts[0].planes[0].rowBytes(), sent.frame.parts[0].planes[0].rowBytes());
    EXPECT_EQ(got.frame.parts[0].planes[0].height, sent.frame.parts[0].planes[0].height);
    EXPECT_EQ(got.frame.parts[0].planes[0].pixels.size(), 0u);
}

TEST(FrameMessage, IsRefusedWhereverItIsCutOff) {
    const std::string bytes = twoParts().bytes();
    for (std::size_t size = 0; size < bytes.size(); ++size)
        EXPECT_THROW(FrameMessage::parse(std::string_view(bytes).substr(0, size), {}), FrameMessageError) << size;
}

TEST(FrameMessage, WithAnyByteChangedIsReadOrRefusedWithinTheLimits) {
    const std::string bytes = twoParts().bytes();
    const Limits limits{64, 4096, 8, 1 << 16};
    for (std::size_t at = 0; at < bytes.size(); ++at) {
        for (const char value : {'\0', '\1', '\x7f', '\x80', '\xff'}) {
            std::string changed = bytes;
            changed[at] = value;
            try {
                for (Part& part : FrameMessage::parse(changed, limits).frame.parts) {
                    part.allocatePixels();
                    for (const Plane& plane : part.planes) EXPECT_LE(plane.pixels.size(), 1u << 16);
                }
            } catch (const FrameMessageError&) {
                continue;
            }
        }
    }
}

TEST(FrameMessage, WithBytesBehindItsEndIsRefused) {
    try {
        FrameMessage::parse(twoParts().bytes() + "x", {});
        FAIL();
    } catch (const FrameMessageError& error) {
        EXPECT_STREQ(error.what(), "it has bytes after its end");
    }
}

TEST(FrameMessage, WithAnImpossibleNumberOfFramesIsRefused) {
    EXPECT_EQ(problemAfter([](FrameMessage& message, Part&) { message.frameCount = 0; }),
              "its number of frames is invalid");
    EXPECT_EQ(problemAfter([](FrameMessage& message, Part&) { message.frameCount = 10'000'001; }),
              "its number of frames is invalid");
}

TEST(FrameMessage, WithoutPartsOrChannelsIsRefused) {
    EXPECT_EQ(problemAfter([](FrameMessage& message, Part&) { message.frame.parts.clear(); }), "it has no parts");
    EXPECT_EQ(problemAfter([](FrameMessage&, Part& part) { part.channels.clear(); }),
              "it has no channels, or more than the limit");
}

TEST(FrameMessage, WithAWindowThatIsEmptyOrBeyondTheLimitsIsRefused) {
    constexpr std::int32_t most = std::numeric_limits<std::int32_t>::max();
    constexpr std::int32_t least = std::numeric_limits<std::int32_t>::min();
    EXPECT_EQ(problemAfter([](FrameMessage&, Part& part) { part.dataWindow.maxX = -4; }), "a window is empty");
    EXPECT_EQ(problemAfter([](FrameMessage&, Part& part) {
                  part.displayWindow = {0, 0, 65536, 0};
              }),
              "a window exceeds the limits");
    EXPECT_EQ(problemAfter([](FrameMessage&, Part& part) {
                  part.dataWindow = {0, 0, 65535, 8192};
              }),
              "a window exceeds the limits");
    EXPECT_EQ(problemAfter([](FrameMessage&, Part& part) {
                  part.dataWindow = {least, least, most, most};
              }),
              "a window exceeds the limits");
}

TEST(FrameMessage, WithMoreChannelsOrBytesThanTheLimitsIsRefused) {
    EXPECT_EQ(problem(twoParts(), {64, 4096, 3, 1 << 16}), "it has no channels, or more than the limit");
    EXPECT_EQ(problem(twoParts(), {64, 4096, 8, 100}), "its pixels exceed the limits");
}

TEST(FrameMessage, WithImpossibleTilesOrSubSamplingIsRefused) {
    EXPECT_EQ(problemAfter([](FrameMessage&, Part& part) { part.tileWidth = 16; }), "its tile size is invalid");
    EXPECT_EQ(problemAfter([](FrameMessage&, Part& part) { part.tileWidth = part.tileHeight = 65537; }),
              "its tile size is invalid");
    EXPECT_EQ(problemAfter([](FrameMessage&, Part& part) { part.channels[0].xSampling = 0; }),
              "a channel's sub-sampling is invalid");
}
