#include "StillFormat.h"

#include <gtest/gtest.h>

#include "ImageError.h"
#include "Support/NoiseFrame.h"

namespace {

using namespace Image;

/// What a frame of such channels is told; the path is "f.EXTENSION".
std::string complaint(const std::string& extension, const std::vector<std::string>& names,
                      PixelType type = PixelType::Half, const WriteOptions& options = {}) {
    std::vector<Channel> channels;
    for (const std::string& name : names) channels.push_back(namedChannel(name, type));
    try {
        checkFrame("f." + extension, noiseFrame({0, 0, 3, 3}, channels), options);
    } catch (const ImageError& error) {
        return error.what();
    }
    return "none";
}

TEST(StillFormat, HoldsColoursWhateverTheirOrderAndTheirLetters) {
    for (const std::string extension : {"dpx", "tif", "tiff", "png", "jpg", "jpeg", "TIF"}) {
        EXPECT_EQ(complaint(extension, {"B", "G", "R"}), "none") << extension;
        EXPECT_EQ(complaint(extension, {"r", "g", "b"}), "none") << extension;
    }
    for (const std::string extension : {"dpx", "tif", "png"})
        EXPECT_EQ(complaint(extension, {"A", "B", "G", "R"}), "none") << extension;
}

TEST(StillFormat, HoldsAnAlphaChannelAndGreyOnlyWhereThereIsRoom) {
    EXPECT_EQ(complaint("jpg", {"A", "B", "G", "R"}),
              "f.jpg: cannot be written: the frame has the channels R, G, B, A, but JPEG holds only R, G, B; Y; choose "
              ".png, .tif or .exr");
    EXPECT_EQ(complaint("dpx", {"Y"}),
              "f.dpx: cannot be written: the frame has the channels Y, but DPX holds only R, G, B; R, G, B, A; choose "
              ".exr");
    for (const std::string extension : {"tif", "png"}) {
        EXPECT_EQ(complaint(extension, {"Y"}), "none") << extension;
        EXPECT_EQ(complaint(extension, {"Y", "A"}), "none") << extension;
    }
}

TEST(StillFormat, RefusesLayersAndColoursThatAreMissing) {
    EXPECT_EQ(
        complaint("dpx", {"R", "G"}),
        "f.dpx: cannot be written: the frame has the channels R, G, but DPX holds only R, G, B; R, G, B, A; choose "
        ".exr");
    EXPECT_EQ(
        complaint("tif", {"B", "G", "R", "beauty.B", "beauty.G", "beauty.R", "depth.Z"}),
        "f.tif: cannot be written: the frame has the channels R, G, B, beauty.B, beauty.G, beauty.R and 1 more, but "
        "TIFF holds only R, G, B; R, G, B, A; Y; Y, A; choose .exr");
    EXPECT_EQ(complaint("exr", {"R", "G", "beauty.R"}), "none");
}

TEST(StillFormat, RefusesIdentifiersAndTypesThatItHasNot) {
    EXPECT_EQ(complaint("dpx", {"R", "G", "B"}, PixelType::UInt32),
              "f.dpx: cannot be written: channel R has 32-bit integers, which DPX cannot hold; choose .exr");
    EXPECT_EQ(complaint("tif", {"R", "G", "B"}, PixelType::UInt32), "none");
    WriteOptions options;
    options.pixelType = PixelType::Float;
    EXPECT_EQ(complaint("png", {"R", "G", "B"}, PixelType::Half, options),
              "f.png: cannot be written: PNG cannot hold half or float pixels; omit --type, or choose .tif or "
              ".exr");
    EXPECT_EQ(complaint("tif", {"R", "G", "B"}, PixelType::Half, options), "none");
}

TEST(StillFormat, RefusesALongerSideThanItCanCount) {
    Frame frame = noiseFrame({0, 0, 3, 3}, rgba());
    frame.parts[0].channels.erase(frame.parts[0].channels.begin());
    frame.parts[0].dataWindow = frame.parts[0].displayWindow = {0, 0, 65500, 3};
    try {
        checkFrame("f.jpg", frame);
        FAIL();
    } catch (const ImageError& error) {
        EXPECT_STREQ(error.what(),
                     "f.jpg: cannot be written: the picture of 65501 x 4 pixels exceeds JPEG's limit of "
                     "65500 pixels a side; choose .exr");
    }
}

} // namespace
