#include <gtest/gtest.h>

#include <CLI/CLI.hpp>

#include "Options.h"
#include "Support/FailureText.h"

using Program::RenderOptionsReader;
using Tools::RenderOptions;

namespace {

/// Options of `render in.exr -o out.exr` and what follows, parsed like a command line.
RenderOptions options(const std::string& more, const std::string& output = "out.%04d.exr") {
    CLI::App app;
    RenderOptionsReader reader;
    reader.declareOptions(app);
    app.parse("in.%04d.exr -o " + output + " " + more);
    return reader.read();
}

std::string failure(const std::string& more) {
    return failureOf([&] { options(more); });
}

} // namespace

TEST(RenderOptions, HaveTheirDefaults) {
    const RenderOptions read = options("--distortion undistort");
    EXPECT_EQ(read.clip, "in.%04d.exr");
    EXPECT_EQ(read.output.string(), "out.%04d.exr");
    EXPECT_EQ(read.distortion, RenderOptions::Distortion::Undistort);
    EXPECT_EQ(read.shading, RenderOptions::Shading::None);
    EXPECT_FALSE(read.renderMap);
    EXPECT_FALSE(read.plate || read.correctionFile || read.imageArea || read.clipResolution || read.overscan ||
                 read.frames || read.pixelType || read.compression || read.inputSpace || read.ignoresPixelAspect);
    EXPECT_EQ(read.window, RenderOptions::Window::Box);
    EXPECT_EQ(read.boxSize, RenderOptions::BoxSize::Frame);
    EXPECT_FALSE(read.skipExisting || read.overwrite || read.stopOnError || read.force);
    EXPECT_EQ(read.memory, 0u);
    EXPECT_EQ(read.threads, 0u);
}

TEST(RenderOptions, GiveAllFramesOneSizeWhereTheFormatHasNoDataWindow) {
    EXPECT_EQ(options("--distortion undistort", "out.%04d.dpx").boxSize, RenderOptions::BoxSize::Constant);
    EXPECT_EQ(options("--distortion undistort", "out.%04d.EXR").boxSize, RenderOptions::BoxSize::Frame);
    EXPECT_EQ(options("--distortion undistort --size frame", "out.%04d.tif").boxSize, RenderOptions::BoxSize::Frame);
}

TEST(RenderOptions, ReadEveryOption) {
    const RenderOptions read = options(
        "--distortion distort --shading add --plate p.mov --correction-file c.olcf --image-area 23.76x13.37 "
        "--clip-resolution 1920x1080 --overscan 10.5 --frames 1-3 --type float --compression piz --window format "
        "--input-space LogC3 --ocio c.ocio --pixel-aspect ignore --size constant --overwrite --stop-on-error --force "
        "--memory 8G --threads 4 --progress json");
    EXPECT_EQ(read.distortion, RenderOptions::Distortion::Distort);
    EXPECT_EQ(read.shading, RenderOptions::Shading::Add);
    EXPECT_EQ(read.plate, "p.mov");
    EXPECT_EQ(read.correctionFile, "c.olcf");
    EXPECT_EQ(read.imageArea, (Tools::MillimetreSize{23.76f, 13.37f}));
    EXPECT_EQ(read.clipResolution, (Tools::PixelSize{1920, 1080}));
    EXPECT_EQ(read.overscan, 10.5f);
    EXPECT_EQ(read.frames->frames(), (std::vector<std::int32_t>{1, 2, 3}));
    EXPECT_EQ(read.pixelType, RenderOptions::PixelType::Float);
    EXPECT_EQ(read.compression, "piz");
    EXPECT_EQ(read.window, RenderOptions::Window::Format);
    EXPECT_EQ(read.inputSpace, "LogC3");
    EXPECT_EQ(read.colourConfig, "c.ocio");
    EXPECT_TRUE(read.ignoresPixelAspect);
    EXPECT_EQ(read.boxSize, RenderOptions::BoxSize::Constant);
    EXPECT_TRUE(read.overwrite && read.stopOnError && read.force);
    EXPECT_EQ(read.memory, 8589934592u);
    EXPECT_EQ(read.threads, 4u);
}

TEST(RenderOptions, TellHowProgressIsShown) {
    CLI::App app;
    RenderOptionsReader reader;
    reader.declareOptions(app);
    app.parse("in.exr -o out.exr");
    EXPECT_EQ(reader.progress(), "auto");
    app.parse("in.exr -o out.exr --progress json");
    EXPECT_EQ(reader.progress(), "json");
}

TEST(RenderOptions, TakeAMapOfOneCorrection) {
    EXPECT_TRUE(options("--shading remove --map --skip-existing --keep-going").renderMap);
}

TEST(RenderOptions, TakeStartEndAndStep) {
    EXPECT_EQ(options("--shading remove --start -1 --end 3 --step 2").frames->frames(),
              (std::vector<std::int32_t>{-1, 1, 3}));
}

namespace {

struct Defect {
    const char* arguments;
    const char* text;
};

std::ostream& operator<<(std::ostream& stream, const Defect& defect) {
    return stream << '"' << defect.arguments << '"';
}

class RenderOptionsDefect : public testing::TestWithParam<Defect> {};

} // namespace

TEST_P(RenderOptionsDefect, IsReported) {
    EXPECT_EQ(failure(GetParam().arguments), std::string("wrong use: ") + GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(
    All, RenderOptionsDefect,
    testing::Values(
        Defect{"", "No correction is requested: give --distortion undistort|distort, --shading remove|add, or both."},
        Defect{"--distortion undistort --shading-layers rgba",
               "--shading-layers requires --shading, and cannot be combined with --map."},
        Defect{"--shading remove --map --shading-layers rgba",
               "--shading-layers requires --shading, and cannot be combined with --map."},
        Defect{"--distortion undistort --shading remove --map",
               "--map writes the map of one correction: omit --distortion or --shading."},
        Defect{"--shading remove --map --input-space sRGB", "--map writes no pixels of the clip: omit --input-space."},
        Defect{"--distortion undistort --shading add",
               "--distortion undistort requires --shading remove, and distort requires add: a picture either was "
               "recorded through the lens or was not. For other combinations run the program twice."},
        Defect{"--shading remove --image-area 24x13", "--image-area and --clip-resolution must be given together."},
        Defect{"--shading remove --clip-resolution 24x13",
               "--image-area and --clip-resolution must be given together."},
        Defect{"--shading remove --image-area 24 --clip-resolution 24x13",
               "--image-area \"24\" is not a size in millimetres, such as 23.76x13.37."},
        Defect{"--shading remove --overscan -1", "--overscan -1 is not between 0 and 1000 percent."},
        Defect{"--shading remove --overscan nan", "--overscan nan is not between 0 and 1000 percent."},
        Defect{"--shading remove --frames 1 --start 1 --end 2",
               "--frames cannot be combined with --start, --end or --step."},
        Defect{"--shading remove --start 1", "--start and --end must be given together."},
        Defect{"--shading remove --step 2", "--start and --end must be given together."},
        Defect{"--shading remove --skip-existing --overwrite", "--skip-existing and --overwrite cannot be combined."},
        Defect{"--shading remove --keep-going --stop-on-error", "--keep-going and --stop-on-error cannot be combined."},
        Defect{"--shading remove --memory 0",
               "Memory size \"0\" is not understood: it must be more than 0. Examples: 8G, 512M, 1.5G."}));

TEST(RenderOptions, AreCheckedAgainstTheirListsOfWords) {
    for (const char* more : {"--distortion remove", "--shading undistort", "--type 16", "--compression lzw",
                             "--window all", "--pixel-aspect 2", "--ocio c.ocio", "--size 1920x1080", "--threads -1",
                             "--threads 1025", "--progress loud"}) {
        EXPECT_THROW(options(more), CLI::ParseError) << more;
    }
}

TEST(RenderOptions, TakeTheLargestRecordingFormatOfTheNodes) {
    const RenderOptions read = options("--shading add --image-area 36x24 --clip-resolution 7680x4320");
    EXPECT_EQ(read.imageArea, (Tools::MillimetreSize{36.0f, 24.0f}));
    EXPECT_EQ(read.clipResolution, (Tools::PixelSize{7680, 4320}));
}

TEST(RenderOptions, RefuseAnImageAreaBeyondTheNodes) {
    EXPECT_EQ(failure("--shading add --image-area 36.1x20 --clip-resolution 1920x1080"),
              "wrong use: --image-area 36.1x20 is larger than 36x24 mm, the largest supported sensor.");
    EXPECT_EQ(failure("--shading add --image-area 30x24.5 --clip-resolution 1920x1080"),
              "wrong use: --image-area 30x24.5 is larger than 36x24 mm, the largest supported sensor.");
}

TEST(RenderOptions, RefuseAClipResolutionBeyondTheNodes) {
    EXPECT_EQ(failure("--shading add --image-area 36x24 --clip-resolution 8192x4320"),
              "wrong use: --clip-resolution 8192x4320 is larger than 7680x4320 px, the largest supported clip; give "
              "a smaller one of the same aspect ratio.");
}
