#include <ImfChannelList.h>
#include <ImfDeepFrameBuffer.h>
#include <ImfDeepScanLineOutputFile.h>
#include <ImfDeepScanLineOutputPart.h>
#include <ImfDeepTiledOutputFile.h>
#include <ImfEnvmapAttribute.h>
#include <ImfFrameBuffer.h>
#include <ImfInputPart.h>
#include <ImfMultiPartInputFile.h>
#include <ImfMultiPartOutputFile.h>
#include <ImfMultiView.h>
#include <ImfOutputFile.h>
#include <ImfOutputPart.h>
#include <ImfPartType.h>
#include <ImfPreviewImage.h>
#include <ImfRgbaFile.h>
#include <ImfStandardAttributes.h>
#include <ImfStringAttribute.h>
#include <ImfTiledOutputFile.h>
#include <ImfTiledOutputPart.h>
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <functional>
#include <limits>
#include <map>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "Support/RawExr.h"
#include "Support/TemporaryFolder.h"

// Every feature of OpenEXR that the public collections of test pictures show, in small files made here, through the
// whole program: either the picture comes out as it went in (by a lens that does nothing), or one line says why not.

namespace {

using Imath::Box2i;
using Imath::V2i;

/// One channel's samples as bytes, row by row over a data window.
using Samples = std::vector<char>;

std::size_t sampleSize(Imf::PixelType type) { return type == Imf::HALF ? 2 : 4; }

Box2i box(int minX, int minY, int maxX, int maxY) { return {V2i(minX, minY), V2i(maxX, maxY)}; }

std::size_t area(const Box2i& window, const Imf::Channel& channel) {
    return static_cast<std::size_t>((window.max.x - window.min.x) / channel.xSampling + 1) *
           static_cast<std::size_t>((window.max.y - window.min.y) / channel.ySampling + 1);
}

/// Noise between 0.1 and 0.9, the same for the same seed; IDs for integers.
Samples noise(Imf::PixelType type, std::size_t count, std::uint32_t seed) {
    Samples samples(count * sampleSize(type));
    std::uint32_t state = seed * 2654435761u + 12345u;
    for (std::size_t i = 0; i < count; ++i) {
        state = state * 1664525u + 1013904223u;
        const float value = 0.1f + 0.8f * static_cast<float>(state >> 8) / 16777216.0f;
        char* const to = samples.data() + i * sampleSize(type);
        const half asHalf(value);
        const std::uint32_t identifier = state >> 10;
        if (type == Imf::HALF) std::memcpy(to, &asHalf, 2);
        if (type == Imf::FLOAT) std::memcpy(to, &value, 4);
        if (type == Imf::UINT) std::memcpy(to, &identifier, 4);
    }
    return samples;
}

/// The pixels of one part, kept as long as its frame buffer is used.
struct Pixels {
    std::map<std::string, Samples> samples;
    Imf::FrameBuffer buffer;

    /// Noise in every channel that `header` declares, over `window`.
    Pixels(const Imf::Header& header, const Box2i& window, bool isFilled = true) {
        std::uint32_t seed = 1;
        for (auto c = header.channels().begin(); c != header.channels().end(); ++c, ++seed) {
            const Imf::Channel& channel = c.channel();
            const std::size_t count = area(window, channel);
            Samples& bytes = samples[c.name()];
            bytes = isFilled ? noise(channel.type, count, seed) : Samples(count * sampleSize(channel.type));
            buffer.insert(c.name(), slice(bytes, channel, window));
        }
    }

    static Imf::Slice slice(Samples& bytes, const Imf::Channel& channel, const Box2i& window) {
        const std::size_t size = sampleSize(channel.type);
        const std::size_t columns = static_cast<std::size_t>((window.max.x - window.min.x) / channel.xSampling + 1);
        const std::ptrdiff_t first =
            window.min.y / channel.ySampling * static_cast<std::ptrdiff_t>(columns) + window.min.x / channel.xSampling;
        return {channel.type,
                bytes.data() - first * static_cast<std::ptrdiff_t>(size),
                size,
                columns * size,
                channel.xSampling,
                channel.ySampling};
    }
};

// Smaller than a block of every compression method in one direction, larger in the other.
constexpr int width = 64;
constexpr int height = 48;

Imf::Header header(const std::string& channels = "RGBA", Imf::PixelType type = Imf::HALF) {
    Imf::Header made(width, height);
    for (const char channel : channels) made.channels().insert(std::string(1, channel), Imf::Channel(type));
    made.compression() = Imf::ZIP_COMPRESSION;
    return made;
}

void writeLines(const std::string& path, const Imf::Header& header) {
    const Pixels pixels(header, header.dataWindow());
    Imf::OutputFile file(path.c_str(), header);
    file.setFrameBuffer(pixels.buffer);
    file.writePixels(header.dataWindow().max.y - header.dataWindow().min.y + 1);
}

void writeTiles(const std::string& path, Imf::Header header, Imf::LevelMode levels = Imf::ONE_LEVEL) {
    header.setTileDescription(Imf::TileDescription(16, 32, levels));
    Imf::TiledOutputFile file(path.c_str(), header);
    const Pixels pixels(header, header.dataWindow());
    file.setFrameBuffer(pixels.buffer);
    for (int y = 0; y < file.numYLevels(); ++y) {
        for (int x = 0; x < file.numXLevels(); ++x) {
            if (levels != Imf::RIPMAP_LEVELS && x != y) continue;
            file.writeTiles(0, file.numXTiles(x) - 1, 0, file.numYTiles(y) - 1, x, y);
        }
    }
}

void writeParts(const std::string& path, std::vector<Imf::Header> headers) {
    for (std::size_t i = 0; i < headers.size(); ++i) {
        if (!headers[i].hasName()) headers[i].setName("part" + std::to_string(i));
        if (!headers[i].hasType())
            headers[i].setType(headers[i].hasTileDescription() ? Imf::TILEDIMAGE : Imf::SCANLINEIMAGE);
    }
    Imf::MultiPartOutputFile file(path.c_str(), headers.data(), static_cast<int>(headers.size()));
    for (int i = 0; i < static_cast<int>(headers.size()); ++i) {
        const Imf::Header& own = file.header(i);
        const Pixels pixels(own, own.dataWindow());
        if (own.hasTileDescription()) {
            Imf::TiledOutputPart part(file, i);
            part.setFrameBuffer(pixels.buffer);
            part.writeTiles(0, part.numXTiles() - 1, 0, part.numYTiles() - 1);
        } else {
            Imf::OutputPart part(file, i);
            part.setFrameBuffer(pixels.buffer);
            part.writePixels(own.dataWindow().max.y - own.dataWindow().min.y + 1);
        }
    }
}

/// Of deep pictures without any sample, with one channel, "Z".
struct EmptyDeepPixels {
    std::vector<unsigned> counts = std::vector<unsigned>(width * height, 0);
    std::vector<float*> samples = std::vector<float*>(width * height, nullptr);
    Imf::DeepFrameBuffer buffer;

    EmptyDeepPixels() {
        buffer.insertSampleCountSlice(Imf::Slice(Imf::UINT, reinterpret_cast<char*>(counts.data()), 4, 4 * width));
        buffer.insert("Z", Imf::DeepSlice(Imf::FLOAT, reinterpret_cast<char*>(samples.data()), sizeof(float*),
                                          sizeof(float*) * width, sizeof(float)));
    }
};

/// In lines or tiles.
void writeDeep(const std::string& path, bool isTiled) {
    Imf::Header made(width, height);
    made.channels().insert("Z", Imf::Channel(Imf::FLOAT));
    made.compression() = Imf::ZIPS_COMPRESSION;
    made.setType(isTiled ? Imf::DEEPTILE : Imf::DEEPSCANLINE);
    if (isTiled) made.setTileDescription(Imf::TileDescription(16, 16, Imf::ONE_LEVEL));
    const EmptyDeepPixels pixels;
    if (isTiled) {
        Imf::DeepTiledOutputFile file(path.c_str(), made);
        file.setFrameBuffer(pixels.buffer);
        file.writeTiles(0, file.numXTiles() - 1, 0, file.numYTiles() - 1);
    } else {
        Imf::DeepScanLineOutputFile file(path.c_str(), made);
        file.setFrameBuffer(pixels.buffer);
        file.writePixels(height);
    }
}

/// A part with pixels and one with deep data.
void writeDeepBesideFlat(const std::string& path) {
    std::vector<Imf::Header> headers(2, header("Z", Imf::FLOAT));
    headers[0].setName("flat");
    headers[0].setType(Imf::SCANLINEIMAGE);
    headers[1].setName("deep");
    headers[1].setType(Imf::DEEPSCANLINE);
    headers[1].compression() = Imf::ZIPS_COMPRESSION;
    Imf::MultiPartOutputFile file(path.c_str(), headers.data(), 2);
    const Pixels pixels(headers[0], headers[0].dataWindow());
    Imf::OutputPart flat(file, 0);
    flat.setFrameBuffer(pixels.buffer);
    flat.writePixels(height);
    const EmptyDeepPixels none;
    Imf::DeepScanLineOutputPart deep(file, 1);
    deep.setFrameBuffer(none.buffer);
    deep.writePixels(height);
}

/// Pixels that are not a number or infinite, as renderers leave them, apart from each other.
void writeSpecialValues(const std::string& path) {
    const Imf::Header made = header();
    Pixels pixels(made, made.dataWindow());
    const half values[] = {half::qNan(), half::posInf(), half::negInf(), half(65504.0f)};
    std::size_t place = 0;
    for (const half value : values) std::memcpy(pixels.samples["R"].data() + (place += 100) * 2, &value, 2);
    Imf::OutputFile file(path.c_str(), made);
    file.setFrameBuffer(pixels.buffer);
    file.writePixels(height);
}

void writeRgba(const std::string& path, Imf::RgbaChannels channels) {
    std::vector<Imf::Rgba> pixels;
    for (int i = 0; i < width * height; ++i) {
        const float value = 0.3f + 0.2f * std::sin(static_cast<float>(i) * 0.01f);
        pixels.emplace_back(value, value * 0.8f, value * 0.5f, 1.0f);
    }
    Imf::RgbaOutputFile file(path.c_str(), width, height, channels);
    file.setFrameBuffer(pixels.data(), 1, width);
    file.writePixels(height);
}

struct Feature {
    std::string name; ///< as a test's name
    std::function<void(const std::string& path)> write;
    std::string refusal;   ///< the line without the file's path; empty: the picture comes out as it went in
    std::string arguments; ///< of the program
};

/// What the program has to say of a picture that it renders; mostly nothing.
std::string wordsFor(const std::string& feature, const std::string& plate) {
    const auto unshaded = [](const std::string& list) {
        return "Not corrected for shading: " + list + " (use --shading-layers to choose layers)\n";
    };
    const std::string levels = "lenscorrect: Only the first picture of each file of the clip \"" + plate +
                               "\" is read; dropped: mip levels (frames 1).\n";
    const std::map<std::string, std::string> words = {{"MipMap", levels},
                                                      {"RipMap", levels},
                                                      {"Identifiers", unshaded("id")},
                                                      {"ManyLayers", unshaded("N, Z")},
                                                      {"Parts", unshaded("two")}};
    const auto found = words.find(feature);
    return found == words.end() ? std::string() : found->second;
}

void PrintTo(const Feature& feature, std::ostream* stream) { *stream << feature.name; }

Feature lines(const std::string& name, const Imf::Header& header, const std::string& refusal = "",
              const std::string& arguments = "") {
    return {name, [header](const std::string& path) { writeLines(path, header); }, refusal, arguments};
}

Feature parts(const std::string& name, const std::vector<Imf::Header>& headers) {
    return {name, [headers](const std::string& path) { writeParts(path, headers); }, "", ""};
}

template <typename Change>
Imf::Header changed(Imf::Header header, Change change) {
    change(header);
    return header;
}

Imf::Header windows(const Box2i& display, const Box2i& data) {
    return changed(header(), [&](Imf::Header& made) {
        made.displayWindow() = display;
        made.dataWindow() = data;
    });
}

std::vector<Feature> compressions() {
    const std::vector<std::pair<std::string, Imf::Compression>> methods = {
        {"None", Imf::NO_COMPRESSION},   {"Rle", Imf::RLE_COMPRESSION},   {"Zips", Imf::ZIPS_COMPRESSION},
        {"Zip", Imf::ZIP_COMPRESSION},   {"Piz", Imf::PIZ_COMPRESSION},   {"Pxr24", Imf::PXR24_COMPRESSION},
        {"B44", Imf::B44_COMPRESSION},   {"B44a", Imf::B44A_COMPRESSION}, {"Dwaa", Imf::DWAA_COMPRESSION},
        {"Dwab", Imf::DWAB_COMPRESSION},
    };
    std::vector<Feature> features;
    for (const auto& [name, method] : methods) {
        const Imf::Header made = changed(header(), [m = method](Imf::Header& h) { h.compression() = m; });
        // What these two take away once more when they pack the same values is theirs.
        const std::string arguments = name.starts_with("Dwa") ? "--compression zip" : "";
        features.push_back(lines("LinesOf" + name, made, "", arguments));
        features.push_back(
            {"TilesOf" + name, [made](const std::string& path) { writeTiles(path, made); }, "", arguments});
    }
    return features;
}

std::vector<Feature> others() {
    using Imf::Header;
    const auto named = [](const std::string& name, const std::string& view, const std::string& channels = "RGBA") {
        return changed(header(channels), [&](Header& made) {
            made.setName(name);
            if (!view.empty()) made.setView(view);
        });
    };
    std::vector<Feature> features = {
        {"MipMap", [](const std::string& path) { writeTiles(path, header(), Imf::MIPMAP_LEVELS); }, "", ""},
        {"RipMap", [](const std::string& path) { writeTiles(path, header(), Imf::RIPMAP_LEVELS); }, "", ""},
        lines("LinesFromTheBottom", changed(header(), [](Header& h) { h.lineOrder() = Imf::DECREASING_Y; })),
        {"TilesInAnyOrder",
         [](const std::string& path) {
             writeTiles(path, changed(header(), [](Header& h) { h.lineOrder() = Imf::RANDOM_Y; }));
         },
         "", ""},
        lines("Float", header("RGBA", Imf::FLOAT)),
        lines("Identifiers", changed(header("RGB"), [](Header& h) {
                  h.channels().insert("id", Imf::Channel(Imf::UINT));
              })),
        lines("Luminance", header("Y")),
        lines("LuminanceAndAlpha", header("YA")),
        lines("OneColour", header("R")),
        lines("ManyLayers", changed(header(), [](Header& h) {
                  for (const char* const name : {"diffuse.R", "diffuse.G", "diffuse.B", "N.x", "N.y", "N.z", "Z",
                                                 "light.key.R", "light.key.G", "light.key.B", "A name with blanks.R",
                                                 "a.very.long.name.that.only.files.with.long.names.may.have.R"})
                      h.channels().insert(name, Imf::Channel(Imf::FLOAT));
              })),
        parts("Parts", {named("one", ""), named("two", "", "Z"), named("three", "", "RGB")}),
        parts("PartsOfLinesAndTiles", {named("lines", ""), changed(named("tiles", ""), [](Header& h) {
                                           h.setTileDescription(Imf::TileDescription(16, 16, Imf::ONE_LEVEL));
                                       })}),
        parts("PartsOfDifferentDataWindows", {named("whole", ""), changed(named("small", ""), [](Header& h) {
                                                  h.dataWindow() = box(10, 10, 40, 30);
                                              })}),
        parts("ViewsInParts", {named("left", "left"), named("right", "right")}),
        lines("ViewsInOnePart", changed(header(), [](Header& h) {
                  Imf::addMultiView(h, {"left", "right"});
                  for (const char* const name : {"right.R", "right.G", "right.B", "right.A"})
                      h.channels().insert(name, Imf::Channel(Imf::HALF));
              })),
        lines("Preview", changed(header(), [](Header& h) { h.setPreviewImage(Imf::PreviewImage(8, 6)); })),
        lines("EnvironmentMap", changed(header(), [](Header& h) { Imf::addEnvmap(h, Imf::ENVMAP_LATLONG); })),
        lines("Primaries", changed(header(), [](Header& h) {
                  Imf::addChromaticities(h, Imf::Chromaticities());
                  Imf::addWhiteLuminance(h, 100.0f);
              })),
        lines("DataWindowInside", windows(box(0, 0, 63, 47), box(8, 4, 55, 40))),
        lines("DataWindowBeyond", windows(box(0, 0, 63, 47), box(-9, -5, 70, 60))),
        lines("DataWindowOverOneCorner", windows(box(0, 0, 63, 47), box(-30, -20, 20, 10))),
        lines("DataWindowOfOnePixel", windows(box(0, 0, 63, 47), box(40, 30, 40, 30))),
        lines("DataWindowApart", windows(box(0, 0, 63, 47), box(100, 70, 131, 90))),
        lines("DisplayWindowAwayFromTheOrigin", windows(box(1000, 500, 1063, 547), box(1000, 500, 1063, 547))),
        lines("DisplayWindowBelowTheOrigin", windows(box(-64, -48, -1, -1), box(-60, -48, -1, -3))),
        {"NotANumberAndInfinity", writeSpecialValues, "", ""},
        lines("OddSizes", windows(box(0, 0, 62, 46), box(1, 1, 61, 43))),
        {"LuminanceAndChroma", [](const std::string& path) { writeRgba(path, Imf::WRITE_YC); },
         "Channel \"BY\" does not have a sample for every pixel, which is not supported. Convert the picture to full "
         "resolution in every channel (RGB instead of luminance and chroma).",
         ""},
        {"DeepLines", [](const std::string& path) { writeDeep(path, false); },
         "deep images are not supported; flatten the image first", ""},
        {"DeepTiles", [](const std::string& path) { writeDeep(path, true); },
         "deep images are not supported; flatten the image first", ""},
        {"DeepBesideFlat", writeDeepBesideFlat, "deep images are not supported; flatten the image first", ""},
        {"FileThatIsCut",
         [](const std::string& path) {
             writeLines(path, header());
             const std::string bytes = readBytes(path);
             writeBytes(path, bytes.substr(0, bytes.size() / 2));
         },
         "the file ends before its pixels do; it is incomplete, copy or render it again", ""},
    };
    return features;
}

class ExrCorpus : public testing::TestWithParam<Feature> {
protected:
    Support::TemporaryFolder folder;
    const std::string plate = folder.path("1/2/3/4/5/plate.exr");
    const std::string output = folder.path("1/2/3/4/5/out.exr");

    /// A correction file whose lens does nothing, for the picture's display window.
    void writeLens() {
        folder.write(
            "1/2/3/4/5/plate.olcf",
            "# OLCF Version 3\nHEADER_START\nlensManufacturer:=Maker\nlensTypeName:=Lens\nlensSerialNumber:=1\n"
            "lensMinFocalLength:=32\nlensMaxFocalLength:=32\ncameraManufacturer:=\ncameraModel:=\n"
            "sensorWidth:=24\nclipName:=\nvideoFileName:=plate\nclipDurationFrames:=1\nclipWidth:=" +
                std::to_string(displayWidth) + "\nclipHeight:=" + std::to_string(displayHeight) +
                "\ntcFps:=24\ntcDrop:=0\nenableLensShadingCorrection:=1\nshadingGamma:=1\n"
                "enableLensDistortionCorrection:=1\ndistortionZoom:=1\nHEADER_END\n"
                "frame;heights;shading;distortion\n"
                "0;0,3,6,9,11,13,15;100,100,100,100,100,100,100;0,0,0,0,0,0,0;;;;;;01:00:00:00\n");
    }

    int render(std::string& printed) {
        const std::string command = std::string("'") + ORVEX_PROGRAM + "' render '" + plate + "' -o '" + output +
                                    "' --distortion undistort --shading remove --progress none " +
                                    GetParam().arguments + " 2>&1";
        FILE* const program = popen(command.c_str(), "r");
        char line[4096];
        while (fgets(line, sizeof(line), program)) printed += line;
        return WEXITSTATUS(pclose(program));
    }

    int displayWidth = width;
    int displayHeight = height;
};

/// A part's picture: every sample of every channel, by the channel's name, over the part's data window.
struct Picture {
    Picture(Imf::MultiPartInputFile& file, int index)
        : header(file.header(index)), window(header.dataWindow()), pixels(header, window, false) {
        Imf::InputPart part(file, index);
        part.setFrameBuffer(pixels.buffer);
        part.readPixels(window.min.y, window.max.y);
    }

    /// The channel's samples over a window, which may reach beyond the data window: that is black.
    Samples over(const Box2i& wanted, const std::string& channel) const {
        const std::size_t size = sampleSize(header.channels()[channel].type);
        const Samples& own = pixels.samples.at(channel);
        Samples samples;
        for (int y = wanted.min.y; y <= wanted.max.y; ++y) {
            for (int x = wanted.min.x; x <= wanted.max.x; ++x) {
                const std::size_t columns = static_cast<std::size_t>(window.max.x - window.min.x + 1);
                const std::size_t index =
                    static_cast<std::size_t>(y - window.min.y) * columns + static_cast<std::size_t>(x - window.min.x);
                const bool isInside = window.intersects(V2i(x, y));
                for (std::size_t byte = 0; byte < size; ++byte)
                    samples.push_back(isInside ? own[index * size + byte] : '\0');
            }
        }
        return samples;
    }

    std::vector<std::string> channels() const {
        std::vector<std::string> names;
        for (const auto& [name, samples] : pixels.samples) names.push_back(name);
        return names;
    }

    const Imf::Header& header;
    Box2i window;
    Pixels pixels;
};

TEST_P(ExrCorpus, ComesOutAsItWentInOrOneLineSaysWhyNot) {
    folder.write("1/2/3/4/5/out/placeholder");
    GetParam().write(plate);
    if (GetParam().name == "OddSizes") {
        displayWidth = 63;
        displayHeight = 47;
    }
    writeLens();
    std::string printed;
    const int status = render(printed);
    if (!GetParam().refusal.empty()) {
        EXPECT_NE(status, 0);
        EXPECT_NE(printed.find(GetParam().refusal), std::string::npos) << printed;
        EXPECT_NE(printed.find(plate), std::string::npos) << printed;
        EXPECT_FALSE(std::filesystem::exists(output));
        return;
    }
    ASSERT_EQ(status, 0) << printed;
    EXPECT_EQ(printed, wordsFor(GetParam().name, plate));
    Imf::MultiPartInputFile before(plate.c_str());
    Imf::MultiPartInputFile after(output.c_str());
    ASSERT_EQ(before.parts(), after.parts());
    for (int part = 0; part < before.parts(); ++part) {
        const Picture wanted(before, part);
        const Picture got(after, part);
        EXPECT_EQ(got.header.displayWindow(), wanted.header.displayWindow());
        EXPECT_EQ(got.header.pixelAspectRatio(), wanted.header.pixelAspectRatio());
        ASSERT_EQ(got.channels(), wanted.channels());
        Box2i both = wanted.window;
        both.extendBy(got.window);
        for (const std::string& channel : wanted.channels()) {
            ASSERT_EQ(got.header.channels()[channel].type, wanted.header.channels()[channel].type) << channel;
            EXPECT_TRUE(got.over(both, channel) == wanted.over(both, channel)) << part << " " << channel;
        }
    }
}

std::string nameOf(const testing::TestParamInfo<Feature>& info) { return info.param.name; }

INSTANTIATE_TEST_SUITE_P(Compressions, ExrCorpus, testing::ValuesIn(compressions()), nameOf);
INSTANTIATE_TEST_SUITE_P(Features, ExrCorpus, testing::ValuesIn(others()), nameOf);

} // namespace
