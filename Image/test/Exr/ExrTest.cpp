#include <ImfChannelList.h>
#include <ImfDeepScanLineOutputFile.h>
#include <ImfFrameBuffer.h>
#include <ImfInputFile.h>
#include <ImfOutputFile.h>
#include <ImfPartType.h>
#include <ImfPreviewImage.h>
#include <ImfStandardAttributes.h>
#include <ImfStringAttribute.h>
#include <ImfTiledOutputFile.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cmath>
#include <cstring>

#include "FrameReader.h"
#include "FrameWriter.h"
#include "Support/NoiseFrame.h"
#include "Support/RawExr.h"
#include "Support/TemporaryFolder.h"

namespace {

using namespace Image;
using testing::HasSubstr;

Frame readFrame(const std::string& path, unsigned threads = 1) {
    Frame frame;
    openReader(path)->readPixels(frame, threads);
    return frame;
}

/// A file's blocks as they are stored, by their first lines.
std::vector<std::string> storedBlocks(const std::string& path, int linesPerBlock) {
    Imf::InputFile file(path.c_str());
    const Imath::Box2i window = file.header().dataWindow();
    std::vector<std::string> blocks;
    for (int y = window.min.y; y <= window.max.y; y += linesPerBlock) {
        const char* bytes = nullptr;
        int size = 0;
        file.rawPixelData(y, bytes, size);
        blocks.emplace_back(bytes, static_cast<std::size_t>(size));
    }
    return blocks;
}

/// What reading says about the file, without the path in front.
std::string complaint(const std::string& path, const Limits& limits = {}) {
    try {
        Frame frame;
        openReader(path, limits)->readPixels(frame);
    } catch (const ImageError& error) {
        const std::string text = error.what();
        EXPECT_EQ(text.substr(0, path.size() + 2), path + ": ");
        return text.substr(std::min(text.size(), path.size() + 2));
    }
    return "none";
}

/// The half channels of a file as OpenEXR's own C++ reader gives them, interleaved in the given order.
std::string stockHalfs(const std::string& path, const std::vector<std::string>& names) {
    Imf::InputFile file(path.c_str());
    const Imath::Box2i window = file.header().dataWindow();
    const std::size_t width = static_cast<std::size_t>(window.max.x - window.min.x + 1);
    const std::size_t height = static_cast<std::size_t>(window.max.y - window.min.y + 1);
    const std::size_t pixel = names.size() * 2;
    std::string bytes(width * height * pixel, '\0');
    char* const origin = bytes.data() - window.min.y * static_cast<std::ptrdiff_t>(width * pixel) -
                         window.min.x * static_cast<std::ptrdiff_t>(pixel);
    Imf::FrameBuffer buffer;
    for (std::size_t i = 0; i < names.size(); ++i)
        buffer.insert(names[i], Imf::Slice(Imf::HALF, origin + i * 2, pixel, width * pixel));
    file.setFrameBuffer(buffer);
    file.readPixels(window.min.y, window.max.y);
    return bytes;
}

class Exr : public testing::Test {
protected:
    Support::TemporaryFolder folder;
    const std::string path = folder.path("frame.exr");
};

class ExrCompression : public testing::TestWithParam<const char*> {
protected:
    Support::TemporaryFolder folder;
    const std::string path = folder.path("frame.exr");
};

bool keepsBits(const std::string& compression) { return compression.find_first_of("b4dwx") == std::string::npos; }

/// The largest difference between two runs of halfs.
float largestDifference(const std::string& a, const std::string& b) {
    EXPECT_EQ(a.size(), b.size());
    float largest = 0;
    for (std::size_t i = 0; i + 2 <= std::min(a.size(), b.size()); i += 2) {
        float left;
        float right;
        samplesToFloat(PixelType::Half, a.data() + i, &left, 1);
        samplesToFloat(PixelType::Half, b.data() + i, &right, 1);
        largest = std::max(largest, std::fabs(left - right));
    }
    return largest;
}
// The noise spans 0.1 to 0.75; the lossy methods stay well within a grain's size (0.05).
constexpr float lossyDifference = 0.03f;

TEST_P(ExrCompression, OfAFileIsReadBackByOpenExrItself) {
    const Frame frame = noiseFrame({-5, 3, 61, 300}, rgba());
    WriteOptions options;
    options.compression = GetParam();
    options.threads = 2;
    writeFrame(path, frame, options);
    const std::string stock = stockHalfs(path, {"R", "G", "B", "A"});
    EXPECT_TRUE(pixelBytes(readFrame(path, 2).parts[0]) == stock);
    EXPECT_LE(largestDifference(stock, pixelBytes(frame.parts[0])), keepsBits(GetParam()) ? 0.0f : lossyDifference);
}

TEST_P(ExrCompression, OfTilesIsReadBackByOpenExrItself) {
    Frame frame = noiseFrame({-5, 3, 61, 100}, rgba());
    frame.parts[0].tileWidth = 32;
    frame.parts[0].tileHeight = 48;
    WriteOptions options;
    options.compression = GetParam();
    writeFrame(path, frame, options);
    const Frame back = readFrame(path, 2);
    const std::string stock = stockHalfs(path, {"R", "G", "B", "A"});
    EXPECT_TRUE(pixelBytes(back.parts[0]) == stock);
    EXPECT_EQ(back.parts[0].tileHeight, 48u);
    EXPECT_LE(largestDifference(stock, pixelBytes(frame.parts[0])), keepsBits(GetParam()) ? 0.0f : lossyDifference);
}

TEST_P(ExrCompression, GivesTheSameBytesWhateverTheThreads) {
    const Frame frame = noiseFrame({0, 0, 99, 300}, rgba());
    WriteOptions options;
    options.compression = GetParam();
    writeFrame(path, frame, options);
    options.threads = 3;
    writeFrame(folder.path("again.exr"), frame, options);
    EXPECT_TRUE(readBytes(path) == readBytes(folder.path("again.exr")));
}

TEST_P(ExrCompression, KeepsChannelsOfEveryTypeAndSampling) {
    std::vector<Channel> channels = rgba();
    channels.push_back(namedChannel("Z", PixelType::Float));
    channels.push_back(namedChannel("chroma"));
    channels.back().xSampling = channels.back().ySampling = 2;
    channels.push_back(namedChannel("id", PixelType::UInt32));
    channels.push_back(namedChannel("layer.R"));
    const Frame frame = noiseFrame({0, 0, 41, 77}, channels);
    WriteOptions options;
    options.compression = GetParam();
    writeFrame(path, frame, options);
    const Frame back = readFrame(path);
    ASSERT_EQ(back.parts[0].channels.size(), channels.size());
    for (std::size_t i = 0; i < channels.size(); ++i) EXPECT_EQ(back.parts[0].channels[i].name, channels[i].name);
    if (keepsBits(GetParam())) {
        EXPECT_TRUE(pixelBytes(back.parts[0]) == pixelBytes(frame.parts[0]));
    }
    EXPECT_EQ(back.parts[0].compression, GetParam());
}

INSTANTIATE_TEST_SUITE_P(Every, ExrCompression,
                         testing::Values("none", "rle", "zips", "zip", "piz", "pxr24", "b44", "b44a", "dwaa", "dwab"),
                         [](const auto& name) { return std::string(name.param); });

TEST_F(Exr, IsReadBackByOpenImageIo) {
    const Frame frame = noiseFrame({0, 0, 63, 40}, rgba());
    writeFrame(path, frame, {});
    writeFrame(folder.path("plain.exr"), frame, {.compression = "none"});
    EXPECT_THAT(outputOf("idiff " + path + " " + folder.path("plain.exr")), HasSubstr("PASS"));
    EXPECT_THAT(outputOf("oiiotool --info -v " + path), HasSubstr("64 x   41, 4 channel, half openexr"));
}

TEST_F(Exr, IsReadBackByFfmpeg) {
    Frame frame = noiseFrame({0, 0, 63, 40}, rgba(PixelType::Float));
    writeFrame(path, frame, {});
    const std::string raw = folder.path("raw");
    // ffmpeg's planes come as G, B, R, A.
    EXPECT_EQ(outputOf("ffmpeg -v error -i " + path + " -f rawvideo -pix_fmt gbrapf32le " + raw), "");
    const std::string bytes = readBytes(raw);
    ASSERT_EQ(bytes.size(), 64u * 41 * 16);
    const Plane& plane = frame.parts[0].planes[0];
    for (const std::size_t at : {std::size_t{0}, std::size_t{777}, std::size_t{64 * 41 - 1}})
        EXPECT_EQ(std::memcmp(bytes.data() + at * 4, plane.pixels.data() + at * 16 + 4, 4), 0)
            << "green of pixel " << at;
}

TEST_F(Exr, KeepsEveryAttributeByteForByte) {
    // Of every type OpenEXR knows, one it does not, text without and with a NUL, and names too long for old readers.
    const std::vector<Attribute> attributes{
        {"timeCode", "timecode", RawExr::words({0x10000152, 7})},
        {"framesPerSecond", "rational", RawExr::words({24000, 1001})},
        {"reelName", "string", "A001R"},
        {"empty", "string", ""},
        {"nul", "string", std::string("{\"a\":1}\0{\"b\":2}", 15)},
        {"aNameThatIsLongerThanThirtyOneCharacters", "float", RawExr::words({0x7fc00001})},
        {"double", "double", RawExr::words({1, 2})},
        {"int", "int", RawExr::words({-3})},
        {"box", "box2f", RawExr::words({1, 2, 3, 4})},
        {"vector", "v3f", RawExr::words({1, 2, 3})},
        {"matrix", "m33f", RawExr::words({1, 2, 3, 4, 5, 6, 7, 8, 9})},
        {"chromaticities", "chromaticities", RawExr::words({1, 2, 3, 4, 5, 6, 7, 8})},
        {"keyCode", "keycode", RawExr::words({1, 2, 3, 4, 5, 4, 64})},
        {"strings", "stringvector", RawExr::words({2}) + "ab" + RawExr::words({0})},
        {"floats", "floatvector", RawExr::words({1, 2})},
        {"preview", "preview", RawExr::words({1, 1}) + "rgba"},
        {"environment", "envmap", std::string(1, '\1')},
        {"opaque", "someMakersType", std::string("\0\1\2", 3)}};
    RawExr raw;
    raw.version = 0x402;
    for (const Attribute& each : attributes) raw.more += RawExr::attribute(each.name, each.type, each.value);
    raw.write(path);
    const Frame frame = readFrame(path);
    writeFrame(folder.path("copy.exr"), frame);
    const Frame copy = readFrame(folder.path("copy.exr"));
    for (const Attribute& each : attributes) {
        ASSERT_NE(copy.parts[0].findAttribute(each.name), nullptr) << each.name;
        EXPECT_EQ(*copy.parts[0].findAttribute(each.name), each) << each.name;
    }
    EXPECT_EQ(copy.parts[0].attributes, frame.parts[0].attributes);
    // And OpenEXR itself agrees that the copy is a good file.
    Imf::InputFile stock((folder.path("copy.exr")).c_str());
    EXPECT_EQ(Imf::timeCode(stock.header()).timeAndFlags(), 0x10000152u);
    EXPECT_EQ(stock.header().previewImage().width(), 1u);
}

TEST_F(Exr, KeepsChannelsPartsAndAttributesOfLongNames) {
    const std::string name(255, 'n');
    Frame frame = noiseFrame({0, 0, 15, 15}, {{.name = name, .type = PixelType::Half}});
    frame.parts.push_back(frame.parts[0]);
    frame.parts[0].name = name;
    frame.parts[1].name = "short";
    frame.parts[0].setAttribute({name, "string", "long"});
    writeFrame(path, frame);
    const Part back = readFrame(path).parts[0];
    EXPECT_EQ(back.channels[0].name, name);
    EXPECT_EQ(back.name, name);
    EXPECT_EQ(back.text(name), "long");
    EXPECT_TRUE(pixelBytes(back) == pixelBytes(frame.parts[0]));
}

TEST_F(Exr, WithAChannelNameThatNoFileCanHoldIsRefused) {
    const Frame frame = noiseFrame({0, 0, 15, 15}, {{.name = std::string(256, 'n'), .type = PixelType::Half}});
    try {
        writeFrame(path, frame);
        FAIL();
    } catch (const ImageError& error) {
        EXPECT_EQ(std::string(error.what()), path + ": cannot be written: Text too long for file flags");
    }
}

TEST_F(Exr, CarriesAThreeMegabyteAttribute) {
    RawExr raw;
    raw.more = RawExr::attribute("com.orvex.LensCorrection", "string", std::string(3 << 20, 'x'));
    raw.write(path);
    EXPECT_EQ(openReader(path)->readHeader().parts[0].text("com.orvex.LensCorrection").size(), std::size_t{3} << 20);
}

TEST_F(Exr, KeepsPartsOfDifferentSizeChannelsAndCompression) {
    Frame frame = noiseFrame({0, 0, 63, 40}, rgba());
    frame.parts[0].name = "beauty";
    frame.parts.push_back(noisePart({10, 10, 29, 39}, {namedChannel("Z", PixelType::Float)}));
    frame.parts[1].name = "depth";
    frame.parts[1].displayWindow = frame.parts[0].displayWindow;
    frame.parts[1].compression = "zips";
    frame.parts.push_back(noisePart({0, 0, 63, 40}, {namedChannel("id", PixelType::UInt32)}));
    frame.parts[2].name = "ids";
    frame.parts[2].tileWidth = frame.parts[2].tileHeight = 16;
    writeFrame(path, frame, {.threads = 2});
    const Frame back = readFrame(path, 2);
    ASSERT_EQ(back.parts.size(), 3u);
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(back.parts[i].name, frame.parts[i].name);
        EXPECT_EQ(back.parts[i].dataWindow, frame.parts[i].dataWindow);
        EXPECT_EQ(back.parts[i].compression, frame.parts[i].compression);
        EXPECT_TRUE(pixelBytes(back.parts[i]) == pixelBytes(frame.parts[i]));
    }
    EXPECT_TRUE(stockHalfs(path, {"R", "G", "B", "A"}) == pixelBytes(frame.parts[0]));
    EXPECT_THAT(outputOf("oiiotool --info -a " + path), HasSubstr("subimage  2:   64 x   41, 1 channel, uint openexr"));
}

TEST_F(Exr, RefusesPartsOfTheSameName) {
    Frame frame = noiseFrame({0, 0, 3, 3}, rgba());
    frame.parts.push_back(frame.parts[0]);
    try {
        writeFrame(path, frame);
        FAIL();
    } catch (const ImageError& error) {
        EXPECT_EQ(error.what(), path + ": cannot be written: the parts need different names");
    }
}

TEST_F(Exr, KeepsLineOrderAspectAndWindows) {
    Frame frame = noiseFrame({-8, -8, 39, 39}, rgba());
    frame.parts[0].displayWindow = {0, 0, 31, 31};
    frame.parts[0].lineOrder = LineOrder::DecreasingY;
    frame.parts[0].pixelAspectRatio = 2.0f;
    writeFrame(path, frame);
    const Part back = readFrame(path).parts[0];
    EXPECT_EQ(back.dataWindow, (Window{-8, -8, 39, 39}));
    EXPECT_EQ(back.displayWindow, (Window{0, 0, 31, 31}));
    EXPECT_EQ(back.lineOrder, LineOrder::DecreasingY);
    EXPECT_EQ(back.pixelAspectRatio, 2.0f);
    EXPECT_TRUE(pixelBytes(back) == pixelBytes(frame.parts[0]));
    EXPECT_TRUE(stockHalfs(path, {"R", "G", "B", "A"}) == pixelBytes(frame.parts[0]));
}

TEST_F(Exr, OfPlainLinesInSeveralRunsIsReadBackInEitherLineOrder) {
    for (const LineOrder order : {LineOrder::IncreasingY, LineOrder::DecreasingY}) {
        // 1.5 MiB: more than the runs in which such lines are written.
        Frame frame = noiseFrame({-7, -11, 1016, 180}, rgba());
        frame.parts[0].lineOrder = order;
        writeFrame(path, frame, {.compression = "none", .threads = 3});
        EXPECT_EQ(stockHalfs(path, {"R", "G", "B", "A"}), pixelBytes(frame.parts[0]));
        EXPECT_EQ(pixelBytes(readFrame(path).parts[0]), pixelBytes(frame.parts[0]));
    }
}

TEST_F(Exr, OfALossyMethodHoldsTheBlocksThatOpenExrItselfMakesInEitherLineOrder) {
    const Imf::Compression methods[] = {Imf::B44_COMPRESSION, Imf::B44A_COMPRESSION, Imf::DWAA_COMPRESSION,
                                        Imf::DWAB_COMPRESSION};
    const char* const names[] = {"b44", "b44a", "dwaa", "dwab"};
    const int linesPerBlock[] = {32, 32, 32, 256};
    // Enough lines for several runs of blocks, the last block a short one.
    Frame frame = noiseFrame({-5, -40, 58, 2990}, rgba());
    std::string pixels = pixelBytes(frame.parts[0]);
    for (int i = 0; i < 4; ++i) {
        {
            Imf::Header header(Imath::Box2i({0, 0}, {58, 2990}), Imath::Box2i({-5, -40}, {58, 2990}));
            header.compression() = methods[i];
            Imf::FrameBuffer buffer;
            for (int c = 0; c < 4; ++c) {
                const std::string channel(1, "RGBA"[c]);
                header.channels().insert(channel, Imf::Channel(Imf::HALF));
                buffer.insert(channel, Imf::Slice(Imf::HALF, pixels.data() + 40 * 64 * 8 + 5 * 8 + c * 2, 8, 64 * 8));
            }
            Imf::OutputFile file((folder.path("stock.exr")).c_str(), header);
            file.setFrameBuffer(buffer);
            file.writePixels(3031);
        }
        for (const LineOrder order : {LineOrder::IncreasingY, LineOrder::DecreasingY}) {
            frame.parts[0].lineOrder = order;
            writeFrame(path, frame, {.compression = names[i], .threads = 3});
            EXPECT_TRUE(storedBlocks(path, linesPerBlock[i]) ==
                        storedBlocks(folder.path("stock.exr"), linesPerBlock[i]))
                << names[i];
        }
    }
}

TEST_F(Exr, OfALossyMethodKeepsAChannelWhoseLinesDoNotFitItsBlocks) {
    std::vector<Channel> channels = rgba();
    channels.push_back(namedChannel("depth", PixelType::Float)); // of which nothing is lost
    channels.back().xSampling = channels.back().ySampling = 3;
    const Frame frame = noiseFrame({-6, -3, 56, 140}, channels);
    writeFrame(path, frame, {.compression = "dwaa"});
    const Part back = readFrame(path).parts[0];
    const Plane& depth = frame.parts[0].planes[frame.parts[0].findChannel("depth")->plane];
    const Plane& depthBack = back.planes[back.findChannel("depth")->plane];
    ASSERT_EQ(depthBack.pixels.size(), depth.pixels.size());
    EXPECT_EQ(std::memcmp(depthBack.pixels.data(), depth.pixels.data(), depth.pixels.size()), 0);
}

TEST_F(Exr, OfALossyMethodStoresFloatPixelsAsHalfOnDemand) {
    const Frame floats = noiseFrame({-5, 3, 61, 300}, rgba(PixelType::Float));
    Frame halfs = noiseFrame({-5, 3, 61, 300}, rgba());
    samplesFromFloat(PixelType::Half, reinterpret_cast<const float*>(floats.parts[0].planes[0].pixels.data()),
                     halfs.parts[0].planes[0].pixels.data(), 67 * 298 * 4);
    for (const std::uint32_t tile : {0u, 32u}) {
        Frame from = floats, same = halfs;
        from.parts[0].tileWidth = same.parts[0].tileWidth = tile;
        from.parts[0].tileHeight = same.parts[0].tileHeight = tile;
        writeFrame(path, from, {.compression = "dwaa", .pixelType = PixelType::Half});
        writeFrame(folder.path("same.exr"), same, {.compression = "dwaa"});
        EXPECT_TRUE(readBytes(path) == readBytes(folder.path("same.exr"))) << tile;
    }
}

TEST_F(Exr, ReadsTheLargestLevelOfAMipMap) {
    {
        Imf::Header header(40, 24);
        header.channels().insert("R", Imf::Channel(Imf::HALF));
        header.setTileDescription(Imf::TileDescription(16, 16, Imf::MIPMAP_LEVELS));
        Imf::TiledOutputFile file(path.c_str(), header);
        std::vector<std::uint16_t> halfs(40 * 24, 0x3c00);
        Imf::FrameBuffer buffer;
        buffer.insert("R", Imf::Slice(Imf::HALF, reinterpret_cast<char*>(halfs.data()), 2, 80));
        file.setFrameBuffer(buffer);
        for (int level = 0; level < file.numLevels(); ++level)
            file.writeTiles(0, file.numXTiles(level) - 1, 0, file.numYTiles(level) - 1, level);
    }
    const Frame frame = readFrame(path);
    std::string ones;
    for (int i = 0; i < 40 * 24; ++i) ones += std::string("\x00\x3c", 2);
    EXPECT_TRUE(pixelBytes(frame.parts[0]) == ones);
    writeFrame(folder.path("copy.exr"), frame);
    EXPECT_TRUE(stockHalfs(folder.path("copy.exr"), {"R"}) == ones);
}

TEST_F(Exr, StoresFloatPixelsAsHalfOnDemandButLeavesIdsAlone) {
    std::vector<Channel> channels = rgba(PixelType::Float);
    channels.push_back(namedChannel("id", PixelType::UInt32));
    const Frame frame = noiseFrame({0, 0, 20, 20}, channels);
    writeFrame(path, frame, {.pixelType = PixelType::Half});
    const Part back = readFrame(path).parts[0];
    EXPECT_EQ(back.findChannel("R")->type, PixelType::Half);
    EXPECT_EQ(back.findChannel("id")->type, PixelType::UInt32);
    std::vector<std::uint16_t> expected(21 * 21 * 4);
    samplesFromFloat(PixelType::Half, reinterpret_cast<const float*>(frame.parts[0].planes[0].pixels.data()),
                     expected.data(), expected.size());
    EXPECT_EQ(std::memcmp(back.planes[0].pixels.data(), expected.data(), expected.size() * 2), 0);
}

TEST_F(Exr, UsesAFramesMemoryAgain) {
    writeFrame(path, noiseFrame({0, 0, 63, 63}, rgba()));
    Frame frame = readFrame(path);
    const std::uint8_t* const memory = frame.parts[0].planes[0].pixels.data();
    openReader(path)->readPixels(frame);
    EXPECT_EQ(frame.parts[0].planes[0].pixels.data(), memory);
}

TEST_F(Exr, OnAFullDiskNamesTheCauseAndWhatToDo) {
    try {
        std::filesystem::create_symlink("/dev/full", path);
        writeFrame(path, noiseFrame({0, 0, 63, 63}, rgba()));
        FAIL();
    } catch (const ImageError& error) {
        EXPECT_EQ(error.what(),
                  path + ": cannot be written: No space left on device; free space or choose another folder");
    }
}

TEST_F(Exr, WithASubSampledChannelThatDoesNotFitIsRefused) {
    std::vector<Channel> channels = rgba();
    channels[0].xSampling = 2;
    try {
        writeFrame(path, noiseFrame({0, 0, 40, 77}, channels));
        FAIL();
    } catch (const ImageError& error) {
        EXPECT_EQ(error.what(), path + ": cannot be written: the sub-sampled channel A does not fit the data window");
    }
}

TEST_F(Exr, IntoAMissingFolderNamesTheCause) {
    try {
        writeFrame(folder.path("none/frame.exr"), noiseFrame({0, 0, 3, 3}, rgba()));
        FAIL();
    } catch (const ImageError& error) {
        EXPECT_EQ(error.what(), folder.path("none/frame.exr") + ": cannot be written: No such file or directory");
    }
}

TEST_F(Exr, RefusesAnUnknownCompression) {
    EXPECT_THROW(writeFrame(path, noiseFrame({0, 0, 3, 3}, rgba()), {.compression = "zippy"}), ImageError);
    EXPECT_FALSE(std::filesystem::exists(path));
}

// Reading what is wrong in one place.

TEST_F(Exr, ThatIsMissing) { EXPECT_EQ(complaint(path), "cannot be opened: No such file or directory"); }

TEST_F(Exr, ThatIsAFolder) { EXPECT_EQ(complaint(folder.path("")), "is not a file"); }

TEST_F(Exr, ThatIsAFifoDoesNotWait) {
    ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
    EXPECT_EQ(complaint(path), "is not a file");
}

TEST_F(Exr, ThatIsEmpty) {
    writeBytes(path, "");
    EXPECT_EQ(complaint(path), "is empty; copy or render it again");
}

TEST_F(Exr, OfFourBytes) {
    writeBytes(path, "\x76\x2f\x31\x01");
    EXPECT_EQ(complaint(path), "the file ends inside its header; it is incomplete, copy or render it again");
}

TEST_F(Exr, ThatIsSomethingElse) {
    writeBytes(path, "GIF89a and more");
    EXPECT_EQ(complaint(path), "is not an OpenEXR file");
}

TEST_F(Exr, CutInItsHeader) {
    RawExr raw;
    raw.keptPart = 0.03;
    raw.write(path);
    EXPECT_EQ(complaint(path), "the file ends inside its header; it is incomplete, copy or render it again");
}

TEST_F(Exr, CutInItsPixelsOpensButFailsToRead) {
    for (const double kept : {0.1, 0.5, 0.999}) {
        RawExr raw;
        raw.keptPart = kept;
        raw.write(path);
        EXPECT_EQ(openReader(path)->readHeader().parts[0].dataWindow, (Window{0, 0, 31, 31}));
        EXPECT_EQ(complaint(path), "the file ends before its pixels do; it is incomplete, copy or render it again")
            << kept;
    }
}

TEST_F(Exr, CutInItsCompressedPixels) {
    for (const char* const compression : {"zip", "piz", "dwaa", "pxr24"}) {
        writeFrame(path, noiseFrame({0, 0, 63, 99}, rgba()), {.compression = compression});
        std::filesystem::resize_file(path, std::filesystem::file_size(path) - 5);
        EXPECT_EQ(complaint(path), "the file ends before its pixels do; it is incomplete, copy or render it again")
            << compression;
    }
}

TEST_F(Exr, WithADamagedZipBlock) {
    writeFrame(path, noiseFrame({0, 0, 63, 15}, rgba()));
    std::string bytes = readBytes(path);
    bytes[bytes.size() - 200] = static_cast<char>(bytes[bytes.size() - 200] ^ 0x55);
    writeBytes(path, bytes);
    EXPECT_THAT(complaint(path), testing::StartsWith("the block at line 0 is damaged ("));
}

struct WindowDefect {
    const char* name;
    std::vector<int> dataWindow;
    std::optional<std::vector<int>> displayWindow;
    const char* complaint;
};

std::ostream& operator<<(std::ostream& stream, const WindowDefect& defect) { return stream << defect.name; }

struct ExrWindow : Exr, testing::WithParamInterface<WindowDefect> {};

TEST_P(ExrWindow, ThatCannotBeIsRefusedBeforeMemoryIsTaken) {
    RawExr raw;
    raw.dataWindow = GetParam().dataWindow;
    raw.displayWindow = GetParam().displayWindow;
    raw.pixels = false;
    raw.write(path);
    EXPECT_EQ(complaint(path), GetParam().complaint);
}

constexpr int most = 2147483647;
const std::vector<int> small{0, 0, 31, 31};
INSTANTIATE_TEST_SUITE_P(
    Each, ExrWindow,
    testing::Values(
        WindowDefect{"Empty", {0, 0, -1, -1}, small, "the data window is empty or reversed (0 0 to -1 -1)"},
        WindowDefect{"Reversed", {31, 31, 0, 0}, small, "the data window is empty or reversed (31 31 to 0 0)"},
        WindowDefect{
            "ReversedInOneDirection", {0, 31, 31, 0}, small, "the data window is empty or reversed (0 31 to 31 0)"},
        WindowDefect{"DisplayWindowReversed", small, std::vector<int>{31, 31, 0, 0},
                     "the display window is empty or reversed (31 31 to 0 0)"},
        WindowDefect{"DisplayWindowOfTheWholePlane", small, std::vector<int>{-most, -most, most, most},
                     "the display window of 4294967295 x 4294967295 pixels exceeds the limit of 65536 pixels a side"},
        WindowDefect{"WholeLine",
                     {-most, 0, most, 0},
                     std::nullopt,
                     "the data window of 4294967295 x 1 pixels exceeds the limit of 65536 pixels a side"},
        WindowDefect{"WholePlane",
                     {-most - 1, -most - 1, most, most},
                     small,
                     "the data window of 4294967296 x 4294967296 pixels exceeds the limit of 65536 pixels a side"},
        WindowDefect{"TwoMillionSquared",
                     {0, 0, 2000000, 2000000},
                     std::nullopt,
                     "the data window of 2000001 x 2000001 pixels exceeds the limit of 65536 pixels a side"},
        WindowDefect{"TwoHundredThousandSquared",
                     {0, 0, 199999, 199999},
                     std::nullopt,
                     "the data window of 200000 x 200000 pixels exceeds the limit of 65536 pixels a side"}),
    [](const auto& row) { return row.param.name; });

TEST_F(Exr, WithMorePixelsThanTheLimit) {
    RawExr raw;
    raw.dataWindow = {0, 0, 59999, 59999};
    raw.pixels = false;
    raw.write(path);
    EXPECT_EQ(complaint(path), "the data window of 60000 x 60000 pixels exceeds the limit of 536870912 pixels");
}

TEST_F(Exr, WithMoreChannelsThanTheLimit) {
    RawExr raw;
    raw.channels.clear();
    for (int i = 1000; i < 2025; ++i) raw.channels.push_back({"c" + std::to_string(i), 1});
    raw.write(path);
    EXPECT_EQ(complaint(path), "1025 channels exceed the limit of 1024");
}

TEST_F(Exr, WithinRaisedLimitsIsRead) {
    RawExr().write(path);
    EXPECT_THAT(complaint(path, {.maxSide = 31}), HasSubstr("exceeds the limit of 31 pixels a side"));
    EXPECT_EQ(complaint(path, {.maxSide = 32}), "none");
}

TEST_F(Exr, NeedingMoreMemoryThanTheLimit) {
    RawExr raw;
    raw.dataWindow = {0, 0, 20000, 20000};
    raw.channels.clear();
    for (int i = 100; i < 150; ++i) raw.channels.push_back({"c" + std::to_string(i), 1});
    raw.pixels = false;
    raw.write(path);
    EXPECT_EQ(complaint(path), "its pixels need more memory than the limit of 32768 MiB");
}

TEST_F(Exr, WithItsDataWindowOutsideTheDisplayWindowIsRead) {
    RawExr raw;
    raw.dataWindow = {100, 100, 131, 131};
    raw.displayWindow = {0, 0, 31, 31};
    raw.write(path);
    const Part part = readFrame(path).parts[0];
    EXPECT_EQ(part.dataWindow, (Window{100, 100, 131, 131}));
    EXPECT_EQ(part.displayWindow, (Window{0, 0, 31, 31}));
}

TEST_F(Exr, OfAnUnknownCompressionMethod) {
    RawExr raw;
    raw.compression = 42;
    raw.write(path);
    EXPECT_EQ(complaint(path), "compression method 42 is not supported");
}

TEST_F(Exr, OfALaterVersion) {
    RawExr raw;
    raw.version = 3;
    raw.write(path);
    EXPECT_EQ(complaint(path), "OpenEXR version 3 is not supported");
}

TEST_F(Exr, WithDeepData) {
    {
        Imf::Header header(4, 4);
        header.channels().insert("Z", Imf::Channel(Imf::FLOAT));
        header.setType(Imf::DEEPSCANLINE);
        header.compression() = Imf::ZIPS_COMPRESSION;
        Imf::DeepScanLineOutputFile file(path.c_str(), header);
    }
    EXPECT_EQ(complaint(path), "deep images are not supported; flatten the image first");
}

TEST_F(Exr, WithAnyByteChangedIsReadOrRefusedButNeverCrashes) {
    writeFrame(path, noiseFrame({0, 0, 9, 9}, rgba()));
    const std::string good = readBytes(path);
    const std::string broken = folder.path("broken.exr");
    for (std::size_t at = 0; at < std::min<std::size_t>(good.size(), 700); ++at) {
        std::string bytes = good;
        bytes[at] = static_cast<char>(~bytes[at]);
        writeBytes(broken, bytes);
        try {
            readFrame(broken);
        } catch (const ImageError&) {
        }
    }
}

} // namespace
