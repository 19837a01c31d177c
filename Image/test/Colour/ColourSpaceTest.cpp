#include "Colour/ColourSpace.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <fstream>
#include <vector>

#include "ImageError.h"
#include "Support/EnvironmentVariable.h"
#include "Support/TemporaryFolder.h"

namespace {

using namespace Image;

/// Every space of the built-in configuration, and the value at which its publisher has a grey of 18 percent.
struct PublishedGrey {
    const char* space;
    double grey;
};
constexpr std::array<PublishedGrey, 10> publishedGreys{{{"linear", 0.18},
                                                        {"sRGB", 0.461356},
                                                        {"Rec709", 0.409008},
                                                        {"Cineon", 0.457319},
                                                        {"ACEScct", 0.413588},
                                                        {"LogC3", 400.0 / 1023},
                                                        {"LogC4", 0.278396},
                                                        {"S-Log3", 420.0 / 1023},
                                                        {"V-Log", 433.0 / 1023},
                                                        {"Log3G10", 1.0 / 3}}};

class ColourSpaces : public testing::Test {
protected:
    /// A configuration with these spaces beside the linear one; its path.
    std::string config(const std::string& spaces, const std::string& roles = "scene_linear: lin") {
        const std::string path = folder.path("config.ocio");
        std::ofstream(path) << "ocio_profile_version: 2\nstrictparsing: true\nroles:\n  default: lin\n  " + roles +
                                   "\nfile_rules:\n  - !<Rule> {name: Default, colorspace: default}\n"
                                   "displays:\n  d:\n    - !<View> {name: v, colorspace: lin}\n"
                                   "colorspaces:\n  - !<ColorSpace>\n    name: lin\n" +
                                   spaces;
        return path;
    }
    std::string failureOf(const std::string& name, const std::string& configFile) {
        try {
            openColourSpace(name, configFile);
        } catch (const ImageError& error) {
            return error.what();
        }
        return "(none)";
    }

    Support::TemporaryFolder folder;
    // The machine's own configuration has no say.
    EnvironmentVariable m_variable{"OCIO", std::nullopt};
    const std::string doubled =
        "  - !<ColorSpace>\n    name: doubled\n    aliases: [twice]\n"
        "    to_scene_reference: !<MatrixTransform> {matrix: [0.5,0,0,0, 0,0.5,0,0, 0,0,0.5,0, 0,0,0,1]}\n";
};

TEST_F(ColourSpaces, BuiltInHaveAGreyOf18PercentWhereItsPublisherHasIt) {
    for (const PublishedGrey& published : publishedGreys) {
        std::array<float, 3> grey{0.18f, 0.18f, 0.18f};
        openColourSpace(published.space, "")->fromSceneLinear(grey.data(), 1);
        for (const float value : grey) EXPECT_NEAR(value, published.grey, 1e-4) << published.space; // four digits
    }
}

TEST_F(ColourSpaces, BuiltInRestoreEverySampleOf16Bit) {
    constexpr std::size_t count = 65536;
    for (const PublishedGrey& published : publishedGreys) {
        std::vector<float> pixels;
        for (std::size_t i = 0; i < count; ++i) pixels.insert(pixels.end(), 3, static_cast<float>(i) / 65535.0f);
        const std::unique_ptr<ColourSpace> space = openColourSpace(published.space, "");
        space->toSceneLinear(pixels.data(), count);
        space->fromSceneLinear(pixels.data(), count);
        for (std::size_t i = 0; i < pixels.size(); ++i)
            ASSERT_NEAR(pixels[i], static_cast<double>(i / 3) / 65535, 3e-7) << published.space; // the header's promise
    }
}

TEST_F(ColourSpaces, AreThoseOfTheConfigurationThatIsGivenOrThatTheEnvironmentNames) {
    const std::string path = config(doubled);
    const EnvironmentVariable variable("OCIO", path);
    for (const std::string& configFile : {path, std::string()}) {
        for (const char* const name : {"doubled", "twice"}) {
            std::array<float, 6> pixels{0.5f, 0.25f, 1.0f, 0.0f, -0.5f, 2.0f};
            const std::unique_ptr<ColourSpace> space = openColourSpace(name, configFile);
            space->toSceneLinear(pixels.data(), 2);
            EXPECT_EQ(pixels, (std::array<float, 6>{0.25f, 0.125f, 0.5f, 0.0f, -0.25f, 1.0f}));
            space->fromSceneLinear(pixels.data(), 2);
            EXPECT_EQ(pixels, (std::array<float, 6>{0.5f, 0.25f, 1.0f, 0.0f, -0.5f, 2.0f}));
        }
    }
}

TEST_F(ColourSpaces, ThatAreNotKnownAreToldWithThoseThatAre) {
    EXPECT_EQ(failureOf("Logg", ""),
              "the built-in colour configuration: has no colour space \"Logg\"; it has linear, sRGB, Rec709, Cineon, "
              "ACEScct, LogC3, LogC4, S-Log3, V-Log, Log3G10");
    const std::string path = config(doubled);
    EXPECT_EQ(failureOf("sRGB", path), path + ": has no colour space \"sRGB\"; it has lin, doubled");
}

TEST_F(ColourSpaces, ThatClipAreRefused) {
    const std::string path = config(
        "  - !<ColorSpace>\n    name: clipped\n"
        "    to_scene_reference: !<RangeTransform> {min_in_value: 0, min_out_value: 0, max_in_value: 0.5, "
        "max_out_value: 0.5}\n");
    EXPECT_EQ(failureOf("clipped", path), path +
                                              ": colour space \"clipped\" cannot be used: converting 0.501466 to "
                                              "linear light and back gives 0.500000");
}

TEST_F(ColourSpaces, ThatNeedAMissingTableAreToldWithIt) {
    const std::string path =
        config("  - !<ColorSpace>\n    name: table\n    to_scene_reference: !<FileTransform> {src: nowhere.spi1d}\n");
    EXPECT_EQ(failureOf("table", path).substr(0, path.size() + 104),
              path +
                  ": colour space \"table\" cannot be used (The specified file reference 'nowhere.spi1d' could not "
                  "be located");
}

TEST_F(ColourSpaces, OfAFileThatIsMissingOrNoConfigurationAreRefused) {
    const std::string advice = "); give another one with --ocio, or set OCIO to one";
    EXPECT_EQ(failureOf("lin", folder.path("none.ocio")),
              folder.path("none.ocio") +
                  ": cannot be read as an OpenColorIO configuration (Requested non-existent OCIO "
                  "config \"" +
                  folder.path("none.ocio") + "\"" + advice);
    const std::string text = folder.path("text.ocio");
    std::ofstream(text) << "hello\n";
    const std::string failure = failureOf("lin", text);
    EXPECT_TRUE(failure.starts_with(text + ": cannot be read as an OpenColorIO configuration (")) << failure;
    EXPECT_TRUE(failure.ends_with(advice)) << failure;
}

TEST_F(ColourSpaces, NeedAConfigurationThatSaysWhatIsLinear) {
    const std::string path = config(doubled, "data: lin");
    EXPECT_EQ(failureOf("doubled", path), path + ": has no role \"scene_linear\", which defines linear light; add it");
}

} // namespace
