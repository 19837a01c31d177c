#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <sstream>

#include "FrameReader.h"
#include "FrameWriter.h"
#include "HostMetadata.h"
#include "Support/KnownAttributes.h"
#include "Support/NoiseFrame.h"
#include "Support/RawExr.h"
#include "Support/TemporaryFolder.h"

namespace {

using namespace Image;
using testing::HasSubstr;

std::vector<Channel> rgb(PixelType type) {
    return {namedChannel("R", type), namedChannel("G", type), namedChannel("B", type)};
}

class Stills : public testing::Test {
protected:
    Frame readFrame(const std::string& path) {
        Frame frame;
        openReader(path)->readPixels(frame);
        return frame;
    }
    std::string complaintOfReading(const std::string& path, const Limits& limits = {}) {
        try {
            Frame frame;
            openReader(path, limits)->readPixels(frame);
        } catch (const ImageError& error) {
            return std::string(error.what()).substr(path.size() + 2);
        }
        return "none";
    }
    std::string complaintOfWriting(const std::string& path, const Frame& frame) {
        try {
            writeFrame(path, frame);
        } catch (const ImageError& error) {
            return std::string(error.what()).substr(path.size() + 2);
        }
        return "none";
    }

    Support::TemporaryFolder folder;
};

TEST_F(Stills, OfEightSixteenAndThirtyTwoBitsComeBackAsTheyWere) {
    for (const auto& [extension, type] : {std::pair{"tif", PixelType::UInt8},
                                          {"tif", PixelType::UInt16},
                                          {"tif", PixelType::Float},
                                          {"png", PixelType::UInt8},
                                          {"png", PixelType::UInt16},
                                          {"dpx", PixelType::UInt8},
                                          {"dpx", PixelType::UInt16}}) {
        const std::string path = folder.path("frame." + std::string(extension));
        const Frame frame = noiseFrame({0, 0, 31, 20}, rgb(type));
        writeFrame(path, frame);
        const Frame back = readFrame(path);
        ASSERT_EQ(back.parts[0].planes.size(), 1u) << path;
        EXPECT_EQ(back.parts[0].planes[0].type, type) << path;
        EXPECT_TRUE(pixelBytes(back.parts[0]) == pixelBytes(frame.parts[0])) << path << static_cast<int>(type);
    }
}

TEST_F(Stills, OfHalfPixelsAreStoredInTheNearestTypeThatTheFormatHas) {
    const Frame frame = noiseFrame({0, 0, 30, 20}, rgb(PixelType::Half));
    writeFrame(folder.path("a.tif"), frame);
    writeFrame(folder.path("a.dpx"), frame);
    EXPECT_EQ(readFrame(folder.path("a.tif")).parts[0].channels[0].type, PixelType::Float);
    EXPECT_EQ(readFrame(folder.path("a.dpx")).parts[0].channels[0].type, PixelType::UInt16);
}

TEST_F(Stills, OfMixedPlanesAreInterleaved) {
    std::vector<Channel> channels = rgb(PixelType::Half);
    channels.push_back(namedChannel("A", PixelType::Float));
    const Frame frame = noiseFrame({0, 0, 9, 9}, channels);
    writeFrame(folder.path("a.tif"), frame);
    const Frame back = readFrame(folder.path("a.tif"));
    std::vector<float> row(40);
    back.parts[0].planes[0].rowToFloat(5, row.data());
    std::vector<float> colour(30);
    frame.parts[0].planes[0].rowToFloat(5, colour.data());
    std::vector<float> alpha(10);
    frame.parts[0].planes[1].rowToFloat(5, alpha.data());
    EXPECT_EQ(row[7 * 4 + 1], colour[7 * 3 + 1]);
    EXPECT_EQ(row[7 * 4 + 3], alpha[7]);
}

TEST_F(Stills, AreEqualByteForByteWhenWrittenTwiceUnderAnyName) {
    const Frame frame = noiseFrame({0, 0, 30, 20}, rgb(PixelType::UInt16));
    for (const std::string extension : {"dpx", "tif", "png"}) {
        writeFrame(folder.path("a." + extension), frame);
        const std::string first = readBytes(folder.path("a." + extension));
        // The writers' own stamp counts seconds.
        EXPECT_EQ(first.find("2026"), std::string::npos) << extension;
        writeFrame(folder.path("b." + extension), frame);
        EXPECT_TRUE(readBytes(folder.path("b." + extension)) == first) << extension;
    }
}

TEST_F(Stills, KeepADpxTimecodeOnTheWayToEveryFormatThatHasOne) {
    Frame frame = noiseFrame({0, 0, 30, 20}, rgb(PixelType::UInt16));
    frame.parts[0].setAttribute({"timeCode", "timecode", RawExr::words({0x10000147, 0})});
    writeFrame(folder.path("a.dpx"), frame);
    const Frame dpx = readFrame(folder.path("a.dpx"));
    EXPECT_EQ(metadataText(hostMetadata(dpx, folder.path("a.dpx"), 1).at("input/timecode")), "10:00:01:07");
    writeFrame(folder.path("b.dpx"), dpx);
    writeFrame(folder.path("b.exr"), dpx);
    for (const std::string name : {"b.dpx", "b.exr"}) {
        const Frame back = readFrame(folder.path(name));
        ASSERT_NE(back.parts[0].findAttribute("timeCode"), nullptr) << name;
        EXPECT_TRUE(back.parts[0].findAttribute("timeCode")->value == RawExr::words({0x10000147, 0})) << name;
    }
}

TEST_F(Stills, KeepTheTextsOfADpxHeader) {
    Frame frame = noiseFrame({0, 0, 30, 20}, rgb(PixelType::UInt16));
    frame.parts[0].setAttribute({"dpx:InputDevice", "string", "Camera 7"});
    writeFrame(folder.path("a.dpx"), frame);
    const Frame back = readFrame(folder.path("a.dpx"));
    EXPECT_EQ(metadataText(hostMetadata(back, folder.path("a.dpx"), 1).at("dpx/InputDevice")), "Camera 7");
}

TEST_F(Stills, KeepTenBitsOfADpxAsTenBits) {
    const std::string path = folder.path("a.dpx");
    ASSERT_EQ(outputOf("oiiotool --pattern fill:color=0.25,0.5,0.75 32x16 3 -d uint10 -o " + path), "");
    writeFrame(folder.path("b.dpx"), readFrame(path));
    EXPECT_THAT(outputOf("oiiotool --info -v " + folder.path("b.dpx")), HasSubstr("uint10"));
    EXPECT_THAT(outputOf("idiff " + path + " " + folder.path("b.dpx")), HasSubstr("PASS"));
}

TEST_F(Stills, OfADpxOfFloatsAreWrittenAsADpxOfIntegers) {
    Frame frame = noiseFrame({0, 0, 15, 7}, rgb(PixelType::Float));
    frame.format = "dpx";
    const std::int32_t bits = 32;
    frame.parts[0].attributes.push_back(
        {"oiio:BitsPerSample", "int", std::string(reinterpret_cast<const char*>(&bits), sizeof bits)});
    writeFrame(folder.path("a.dpx"), frame);
    EXPECT_EQ(readFrame(folder.path("a.dpx")).parts[0].channels[0].type, PixelType::UInt16);
}

TEST_F(Stills, OfADpxWithPixelsAsAbgrOrCbycrAreRefused) {
    const std::string path = folder.path("a.dpx");
    writeFrame(path, noiseFrame({0, 0, 30, 20}, rgb(PixelType::UInt8)));
    std::string bytes = readBytes(path);
    bytes[800] = 52;
    writeBytes(path, bytes);
    EXPECT_EQ(complaintOfReading(path), "DPX files with pixels stored as ABGR are not supported; convert to RGBA");
    for (const int descriptor : {100, 101, 102, 103}) {
        bytes[800] = static_cast<char>(descriptor);
        writeBytes(path, bytes);
        EXPECT_EQ(complaintOfReading(path), "DPX files with pixels stored as CbYCr are not supported; convert to RGB");
    }
}

// Not of a PNG: libpng leaves by longjmp, which leaks a text inside OpenImageIO.
TEST_F(Stills, ThatAreCutFailWithTheFilesName) {
    for (const std::string extension : {"dpx", "tif"}) {
        const std::string path = folder.path("a." + extension);
        writeFrame(path, noiseFrame({0, 0, 99, 99}, rgb(PixelType::UInt16)));
        std::filesystem::resize_file(path, std::filesystem::file_size(path) / 2);
        EXPECT_THAT(complaintOfReading(path),
                    testing::EndsWith("the file is incomplete or damaged, copy or render it again"))
            << extension;
    }
}

TEST_F(Stills, BeyondTheLimitsAreRefusedBeforeTheirPixels) {
    writeFrame(folder.path("a.png"), noiseFrame({0, 0, 99, 49}, rgb(PixelType::UInt8)));
    Limits limits;
    limits.maxSide = 64;
    EXPECT_EQ(complaintOfReading(folder.path("a.png"), limits),
              "the picture of 100 x 50 pixels exceeds the limit of 64 pixels a side");
}

TEST_F(Stills, OfAnUnknownKindAreRefused) {
    writeBytes(folder.path("a.dpx"), std::string(5000, 'x'));
    EXPECT_EQ(complaintOfReading(folder.path("a.dpx")), "is not a DPX file");
    writeBytes(folder.path("a.txt"), "text");
    EXPECT_THAT(complaintOfReading(folder.path("a.txt")), testing::StartsWith("cannot be read as an image ("));
    EXPECT_EQ(complaintOfWriting(folder.path("b.txt"), noiseFrame({0, 0, 9, 9}, rgb(PixelType::UInt8))),
              "cannot be written: \".txt\" is not a supported output format; choose .exr, .dpx, .tif, .png or .jpg");
    EXPECT_EQ(complaintOfWriting(folder.path("b"), noiseFrame({0, 0, 9, 9}, rgb(PixelType::UInt8))),
              "cannot be written: its name has no extension; choose .exr, .dpx, .tif, .png or .jpg");
}

TEST_F(Stills, WithoutRoomForTheDataWindowAreRefused) {
    Frame frame = noiseFrame({-5, -5, 30, 20}, rgb(PixelType::UInt8));
    frame.parts[0].displayWindow = {0, 0, 25, 15};
    EXPECT_EQ(complaintOfWriting(folder.path("a.dpx"), frame),
              "cannot be written: this format cannot hold pixels outside the display window; choose .exr, or crop the "
              "frame to its format");
    EXPECT_FALSE(std::filesystem::exists(folder.path("a.dpx")));
    frame.parts[0].displayWindow = {-10, -10, 35, 25};
    EXPECT_EQ(complaintOfWriting(folder.path("a.png"), frame),
              "cannot be written: this format cannot hold a data window smaller than the display window; choose .exr, "
              "or crop the frame to its format");
    EXPECT_FALSE(std::filesystem::exists(folder.path("a.png")));
}

TEST_F(Stills, WithSeveralPartsAreRefused) {
    Frame frame = noiseFrame({0, 0, 9, 9}, rgb(PixelType::UInt8));
    frame.parts.push_back(frame.parts[0]);
    EXPECT_EQ(complaintOfWriting(folder.path("a.png"), frame),
              "cannot be written: the frame has several parts, which only OpenEXR holds; choose .exr");
}

TEST_F(Stills, IntoAMissingFolderAreAnError) {
    EXPECT_THAT(complaintOfWriting(folder.path("none/a.dpx"), noiseFrame({0, 0, 9, 9}, rgb(PixelType::UInt8))),
                testing::StartsWith("cannot be written: "));
}

std::string bytesOf(std::initializer_list<float> values) {
    std::string bytes;
    for (const float value : values) bytes.append(reinterpret_cast<const char*>(&value), sizeof value);
    return bytes;
}

/// A value of every type that a reader can give, whether it suits the attribute or not: an OpenEXR file may call
/// anything anything.
const std::vector<std::pair<std::string, std::string>>& valuesOfEveryType() {
    static const std::vector<std::pair<std::string, std::string>> values{
        {"string", "2019:07:06 05:04:03"},
        {"string", ""},
        {"string", std::string(3000, 'x')},
        {"int", RawExr::words({7})},
        {"int", RawExr::words({-1})},
        {"float", bytesOf({2.8f})},
        {"float", bytesOf({std::numeric_limits<float>::quiet_NaN()})},
        {"double", std::string(6, '\0') + "\xf0\x3f"},
        {"rational", RawExr::words({24000, 1001})},
        {"rational", RawExr::words({1, 0})},
        {"timecode", RawExr::words({0x10000147, 0})},
        {"keycode", RawExr::words({1, 2, 3, 4, 5, 4, 64})},
        {"v2f", bytesOf({1, 2})},
        {"v3f", bytesOf({1, 2, 3})},
        {"m33f", bytesOf({1, 0, 0, 0, 1, 0, 0, 0, 1})},
        {"m44f", bytesOf({1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1})},
        {"box2i", RawExr::words({0, 0, 7, 7})},
        {"chromaticities", bytesOf({1, 0, 0, 1, 0, 0, 0.3f, 0.3f})},
        {"oiio/uint8[20]", std::string(20, 'y')},
        {"oiio/int16", std::string(2, '\1')},
        {"oiio/uint16", std::string(2, '\1')},
        {"oiio/uint", RawExr::words({3})},
        {"oiio/float[4]", bytesOf({24, 70, 2.8f, 4})},
        {"oiio/rational[3]", RawExr::words({48, 1, 12, 1, 30, 1})},
        {"oiio/int[16]", RawExr::words(std::vector<int>(16, 1))}};
    return values;
}

std::string words(const std::vector<std::string>& texts) {
    std::string line;
    for (const std::string& text : texts) line += " " + text;
    return line;
}

std::vector<std::string> linesOf(const std::string& text) {
    std::istringstream stream(text);
    std::vector<std::string> lines;
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
    return lines;
}

struct Stored {
    const char* extension;
    PixelType type;
    /// What the pixels may be off: nothing, or what the format's loss or the other reader's 16 bits make of noise.
    float tolerance;
};

class StillsOf : public Stills, public testing::WithParamInterface<Stored> {};

TEST_P(StillsOf, EveryDepthAndAttributeAreTheSameForOtherReaders) {
    const auto [extension, type, tolerance] = GetParam();
    // Of an even width: the other reader wants whole words in the lines of a DPX.
    const Frame plain = noiseFrame({0, 0, 31, 20}, rgb(type));
    std::vector<std::string> paths{folder.path("plain.") + extension};
    writeFrame(paths[0], plain);
    const std::string pixels = pixelBytes(readFrame(paths[0]).parts[0]);
    for (const auto& [kind, value] : valuesOfEveryType()) {
        Frame frame = plain;
        for (const std::string& name : knownAttributes()) frame.parts[0].attributes.push_back({name, kind, value});
        paths.push_back(folder.path(std::to_string(paths.size()) + "." + extension));
        ASSERT_NO_THROW(writeFrame(paths.back(), frame)) << kind << " " << value.substr(0, 20);
        EXPECT_TRUE(pixelBytes(readFrame(paths.back()).parts[0]) == pixels) << kind << " " << value.substr(0, 20);
    }
    // The others give each file's pixels as a sum over them.
    std::vector<std::string> sums;
    for (const std::string& line : linesOf(outputOf("oiiotool --info --hash" + words(paths) + " 2>&1")))
        if (const std::size_t at = line.find("SHA-1: "); at != std::string::npos) sums.push_back(line.substr(at));
    EXPECT_THAT(sums, testing::AllOf(testing::SizeIs(paths.size()), testing::Each(sums.at(0))));
    // Its remarks about attributes that it does not know are its own business.
    const std::vector<std::string> signatures =
        linesOf(outputOf("identify -format '%#\\n'" + words(paths) + " 2>/dev/null || true"));
    EXPECT_THAT(signatures, testing::AllOf(testing::SizeIs(paths.size()), testing::Each(signatures.at(0))));
    // And the pixels are those that were to be written.
    Frame reference = plain;
    Part& part = reference.parts[0];
    for (Channel& channel : part.channels) channel.type = PixelType::Float;
    part.layOutPlanes();
    part.allocatePixels();
    std::vector<float> row(32 * 3);
    for (std::size_t y = 0; y < 21; ++y) {
        plain.parts[0].planes[0].rowToFloat(y, row.data());
        part.planes[0].rowFromFloat(y, row.data());
    }
    writeFrame(folder.path("plain.exr"), reference);
    const std::string limit = " -fail " + std::to_string(tolerance) + " -failpercent 0 ";
    EXPECT_THAT(outputOf("idiff" + limit + paths[0] + " " + folder.path("plain.exr")), HasSubstr("PASS"));
    const std::string other = folder.path("other.rgb");
    // convert takes every DPX for film density.
    const bool isDpx = std::string(extension) == "dpx";
    const bool isInBytes = isDpx && type == PixelType::UInt8;
    ASSERT_EQ(outputOf(isDpx ? "ffmpeg -v error -i " + paths[0] + " -f rawvideo -pix_fmt " +
                                   (isInBytes ? "rgb24 " : "rgb48le ") + other
                             : "convert " + paths[0] + " -depth 16 -endian LSB rgb:" + other),
              "");
    const std::string bytes = readBytes(other);
    ASSERT_EQ(bytes.size(), 32u * 21 * 3 * (isInBytes ? 1 : 2));
    for (std::size_t y = 0; y < 21; ++y) {
        plain.parts[0].planes[0].rowToFloat(y, row.data());
        for (std::size_t i = 0; i < row.size(); ++i) {
            const std::size_t at = y * row.size() + i;
            std::uint16_t sample = static_cast<std::uint8_t>(bytes[isInBytes ? at : 0]) * 257;
            if (!isInBytes) std::memcpy(&sample, bytes.data() + at * 2, 2);
            ASSERT_NEAR(static_cast<float>(sample) / 65535.0f, row[i], tolerance + 1.0f / 65535.0f) << y << " " << i;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(, StillsOf,
                         testing::Values(Stored{"tif", PixelType::UInt8, 0}, Stored{"tif", PixelType::UInt16, 0},
                                         Stored{"tif", PixelType::Float, 0}, Stored{"png", PixelType::UInt8, 0},
                                         Stored{"png", PixelType::UInt16, 0}, Stored{"dpx", PixelType::UInt8, 0},
                                         Stored{"dpx", PixelType::UInt16, 0}, Stored{"jpg", PixelType::UInt8, 0.08f}),
                         [](const auto& given) {
                             return given.param.extension + std::to_string(bytesPerSample(given.param.type) * 8);
                         });

} // namespace
