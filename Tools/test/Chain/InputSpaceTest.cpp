#include "Chain/InputSpace.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "Support/EnvironmentVariable.h"

namespace Tools {
namespace {

using DD::Image::Box;
using DD::Image::ChannelSet;
using DD::Image::ImagePlane;

ChainSettings shadingOptions() {
    ChainSettings options;
    options.shading = ChainSettings::Shading::Remove;
    return options;
}

Image::Frame frameWith(const std::string& name, const std::string& value) {
    Image::Frame frame;
    frame.parts.resize(2);
    frame.parts[1].setAttribute({name, "string", value});
    return frame;
}

bool isRefused(const std::string& name, const std::string& value) {
    return !InputSpace::objection(shadingOptions(), frameWith(name, value)).empty();
}

ImagePlane planeOf(const std::vector<const char*>& channels, float value) {
    ChannelSet set;
    for (const char* const channel : channels) set += DD::Image::channel(channel);
    ImagePlane plane(Box(0, 0, 4, 2), true, set);
    plane.makeWritable();
    std::fill_n(plane.writable(), plane.usage() / sizeof(float), value);
    return plane;
}

/// The built-in sRGB, and what it makes of 0.5 by IEC 61966-2-1.
class SRgb : public testing::Test {
protected:
    static ChainSettings options() {
        ChainSettings options = shadingOptions();
        options.inputSpace = "sRGB";
        return options;
    }

    const EnvironmentVariable m_variable{"OCIO", std::nullopt};
    const InputSpace space{options()};
    const float linear = 0.21404f;
    const Box everything{0, 0, 4, 2};
    static constexpr float tolerance = 1e-5f; // the digits above
};

TEST(InputSpaceObjection, NamesTheAttributeAndWhatToGive) {
    EXPECT_EQ(InputSpace::objection(shadingOptions(), frameWith("dpx:Transfer", "Printing density")),
              "The pixels are not linear (dpx:Transfer is \"Printing density\"), but shading is a factor on linear "
              "light. Name their colour space with --input-space NAME, which converts them to linear light and back, "
              "or give --input-space raw to correct the values as they are.");
}

TEST(InputSpaceObjection, IsMadeToEverySpaceThatIsKnownNotToBeLinear) {
    for (const char* const transfer : {"Printing density", "Logarithmic", "Unspecified video", "SMPTE 274M",
                                       "ITU-R 709-4", "ITU-R 601-5 system B or G", "NTSC composite video"})
        EXPECT_TRUE(isRefused("dpx:Transfer", transfer)) << transfer;
    for (const char* const space : {"sRGB", "Rec709", "KodakLog", "GammaCorrected2.2"})
        EXPECT_TRUE(isRefused("oiio:ColorSpace", space)) << space;
    for (const char* const space : {"sRGB - Texture", "ARRI LogC3 (EI800)", "ACEScct", "ADX10", "Output - Rec.709"})
        EXPECT_TRUE(isRefused("colorSpace", space)) << space;
    for (const char* const space : {"srgb_rec709_scene", "g22_rec709_display", "pq_rec2020_display"})
        EXPECT_TRUE(isRefused("colorInteropID", space)) << space;
    for (const char* const transfer : {"bt709", "smpte2084", "arib-std-b67", "iec61966-2-1", "log100", "unknown"})
        EXPECT_TRUE(isRefused("color_transfer", transfer)) << transfer;
}

TEST(InputSpaceObjection, IsNotMadeToLinearSpacesAndToWhatIsNotKnown) {
    for (const char* const transfer : {"Linear", "User defined", "Undefined", "Z linear"})
        EXPECT_FALSE(isRefused("dpx:Transfer", transfer)) << transfer;
    for (const char* const space : {"Linear", "linear", "scene_linear", "lin_rec709_scene", "Linear Rec.709 (sRGB)",
                                    "Utility - Linear - sRGB", "ACEScg", "ACES2065-1", "acescg", "", "house space"})
        EXPECT_FALSE(isRefused("oiio:ColorSpace", space)) << space;
    EXPECT_FALSE(isRefused("color_transfer", "linear"));
    EXPECT_FALSE(isRefused("comments", "shot in sRGB"));
}

TEST(InputSpaceObjection, IsMadeToCineonFilesWhateverTheySay) {
    Image::Frame frame;
    frame.format = "cineon";
    frame.parts.resize(1);
    EXPECT_TRUE(InputSpace::objection(shadingOptions(), frame)
                    .starts_with("The pixels are not linear (Cineon files hold printing density), but"));
}

TEST(InputSpaceObjection, IsMadeToShadingOnlyAndOnlyWhileNothingWasSaidAboutTheSpace) {
    const Image::Frame frame = frameWith("oiio:ColorSpace", "sRGB");
    ChainSettings distortion;
    distortion.distortion = ChainSettings::Distortion::Undistort;
    EXPECT_EQ(InputSpace::objection(distortion, frame), "");
    ChainSettings map = shadingOptions();
    map.renderMap = true;
    EXPECT_EQ(InputSpace::objection(map, frame), "");
    for (const char* const name : {"raw", "sRGB"}) {
        ChainSettings named = shadingOptions();
        named.inputSpace = name;
        EXPECT_EQ(InputSpace::objection(named, frame), "");
    }
}

TEST(InputSpace, ConvertsNothingWhenNoneIsNamedOrTheValuesAreRaw) {
    for (const char* const name : {static_cast<const char*>(nullptr), "raw"}) {
        ChainSettings options = shadingOptions();
        if (name) options.inputSpace = name;
        const InputSpace space(options);
        ImagePlane plane = planeOf({"rgba.red", "rgba.green", "rgba.blue"}, 0.5f);
        space.toSceneLinear(plane, plane.bounds(), 1, false);
        EXPECT_FALSE(space.isConverting());
        EXPECT_EQ(plane.at(0, 0, 0), 0.5f);
        EXPECT_EQ(space.black(DD::Image::Chan_Red, false), 0.0f);
    }
}

TEST_F(SRgb, IsConvertedInRedGreenAndBlueAndBack) {
    for (const unsigned int threads : {1u, 3u}) {
        ImagePlane plane = planeOf({"rgba.red", "rgba.green", "rgba.blue", "rgba.alpha"}, 0.5f);
        space.toSceneLinear(plane, everything, threads, false);
        for (const int component : {0, 1, 2}) EXPECT_NEAR(plane.at(3, 1, component), linear, tolerance);
        EXPECT_EQ(plane.at(3, 1, 3), 0.5f); // alpha
        space.fromSceneLinear(plane, threads, false);
        for (const int component : {0, 1, 2, 3}) EXPECT_NEAR(plane.at(3, 1, component), 0.5f, 3e-7f);
    }
}

TEST_F(SRgb, IsConvertedOnlyWhereThePictureIs) {
    ImagePlane plane = planeOf({"rgba.red", "rgba.green", "rgba.blue"}, 0.5f);
    space.toSceneLinear(plane, Box(-5, 1, 2, 9), 1, false);
    for (int y = 0; y < 2; ++y)
        for (int x = 0; x < 4; ++x)
            EXPECT_NEAR(plane.at(x, y, 1), x < 2 && y == 1 ? linear : 0.5f, tolerance) << x << " " << y;
}

TEST_F(SRgb, TouchesNoPlaneThatThePictureDoesNotReach) {
    ImagePlane plane = planeOf({"rgba.red", "rgba.green", "rgba.blue"}, 0.5f);
    space.toSceneLinear(plane, Box(10, 10, 12, 12), 1, false);
    for (int y = 0; y < 2; ++y)
        for (int x = 0; x < 4; ++x) EXPECT_EQ(plane.at(x, y, 0), 0.5f);
}

TEST_F(SRgb, IsConvertedInAGreyPicture) {
    ImagePlane plane = planeOf({"rgba.red"}, 0.5f);
    space.toSceneLinear(plane, everything, 1, false);
    EXPECT_NEAR(plane.at(0, 0, 0), linear, tolerance);
}

TEST_F(SRgb, LeavesDataAlone) {
    for (const char* const name : {"depth.Z", "normal.red", "other.X"}) {
        ImagePlane plane = planeOf({name}, 0.5f);
        space.toSceneLinear(plane, everything, 1, false);
        space.fromSceneLinear(plane, 1, false);
        EXPECT_EQ(plane.at(0, 0, 0), 0.5f) << name;
    }
}

TEST(InputSpace, HasABlackOfItsOwn) {
    const EnvironmentVariable variable("OCIO", std::nullopt);
    ChainSettings options = shadingOptions();
    options.inputSpace = "Cineon";
    const InputSpace space(options);
    EXPECT_NEAR(space.black(DD::Image::Chan_Red, false), 95.0f / 1023.0f, 1e-6f); // by definition
    EXPECT_EQ(space.black(DD::Image::Chan_Alpha, false), 0.0f);
    EXPECT_EQ(space.black(DD::Image::channel("depth.Z"), false), 0.0f);
}

} // namespace
} // namespace Tools
