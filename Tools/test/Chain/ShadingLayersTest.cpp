#include "Chain/ShadingLayers.h"

#include <gtest/gtest.h>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "Support/FailureText.h"

namespace Tools {
namespace {

using Names = std::vector<std::string>;

Image::Part part(const Names& channels, const std::string& name = "") {
    Image::Part part;
    part.name = name;
    for (const std::string& channelName : channels) {
        Image::Channel channel;
        channel.name = channelName;
        part.channels.push_back(channel);
    }
    return part;
}

Image::Frame frame(const std::vector<Image::Part>& parts) {
    Image::Frame frame;
    frame.parts = parts;
    return frame;
}

/// The names of the first part's shaded channels.
Names shaded(const Image::Frame& frame, const ShadingLayers& layers = {}) {
    const std::vector<bool> isShaded = layers.shadedChannels(frame, 0);
    Names names;
    for (std::size_t i = 0; i < isShaded.size(); ++i)
        if (isShaded[i]) names.push_back(frame.parts[0].channels[i].name);
    return names;
}

Names shaded(const Names& channels, const std::string& patterns = "") {
    return shaded(frame({part(channels)}), patterns.empty() ? ShadingLayers() : ShadingLayers::parse(patterns));
}

Names unshaded(const Names& channels) { return ShadingLayers().unshaded(frame({part(channels)}), 0); }

bool isColourLayer(const std::string& layer) { return !shaded(Names{layer + ".R"}).empty(); }

TEST(ShadingLayers, ShadeRedGreenAndBlueButNoAlpha) {
    EXPECT_EQ(shaded(Names{"A", "B", "G", "R"}), (Names{"B", "G", "R"}));
    EXPECT_EQ(shaded(Names{"spec.alpha", "spec.blue", "spec.green", "spec.red"}),
              (Names{"spec.blue", "spec.green", "spec.red"}));
    EXPECT_EQ(shaded(Names{"x.a", "x.b", "x.g", "x.r"}), (Names{"x.b", "x.g", "x.r"}));
}

TEST(ShadingLayers, DecideForEachChannelOfALayer) {
    EXPECT_EQ(shaded(Names{"beauty.B", "beauty.G", "beauty.R", "beauty.Z", "Z"}),
              (Names{"beauty.B", "beauty.G", "beauty.R"}));
    EXPECT_EQ(shaded(Names{"N.X", "N.Y", "N.Z", "forward.u", "object.id"}), Names());
}

TEST(ShadingLayers, ShadeLuminanceThatStandsForColour) {
    EXPECT_EQ(shaded(Names{"Y"}), Names{"Y"});
    EXPECT_EQ(shaded(Names{"R", "Y"}), Names{"R"});
    EXPECT_EQ(shaded(Names{"position.Y"}), Names());
}

TEST(ShadingLayers, KnowDataByTheWordsOfALayersName) {
    for (const char* const layer : {"depth",
                                    "left.Depth",
                                    "normals",
                                    "Normal",
                                    "worldPosition",
                                    "world_position",
                                    "motion-blur",
                                    "motionVector",
                                    "VRayVelocity",
                                    "STMap",
                                    "uv1",
                                    "UVs",
                                    "objectID",
                                    "ID",
                                    "IDs",
                                    "material_id",
                                    "crypto00",
                                    "CryptoMaterial01",
                                    "uCryptoObject",
                                    "mask",
                                    "light.mask2",
                                    "Pref",
                                    "N",
                                    "P",
                                    "Z"}) {
        EXPECT_FALSE(isColourLayer(layer)) << layer;
    }
}

TEST(ShadingLayers, TakeALayerForColourWhoseNameJustContainsADataWord) {
    for (const char* const layer : {"GRID", "GRID.RGB", "SOLID", "light_p.RGB", "beauty.RGB", "Beauty", "spline",
                                    "masked", "depthless", "still", "n_light", "unmasking", "stripes"}) {
        EXPECT_TRUE(isColourLayer(layer)) << layer;
    }
}

TEST(ShadingLayers, TakeAPartsNameForTheLayerOfChannelsThatHaveNone) {
    const Image::Part depth = part({"R", "G", "B"}, "depth");
    EXPECT_EQ(shaded(frame({depth, part({"R"}, "rgba")})), Names());
    EXPECT_EQ(shaded(frame({depth})), (Names{"R", "G", "B"})) << "a single part is the picture itself";
}

TEST(ShadingLayers, ShadeWhatFitsOneOfThePatternsAndNothingElse) {
    const Names channels{"R", "A", "light_key.R", "light_key.A", "light_fill.R", "N.X", "Z"};
    EXPECT_EQ(shaded(channels, "light_*"), (Names{"light_key.R", "light_fill.R"}));
    EXPECT_EQ(shaded(channels, "rgba,light_key.R,Z"), (Names{"R", "light_key.R", "Z"}));
    EXPECT_EQ(shaded(channels, "beauty"), Names());
}

TEST(ShadingLayers, LetTheLastPatternThatFitsDecide) {
    EXPECT_EQ(shaded(Names{"R", "N.X", "Z"}, "*,!N"), (Names{"R", "Z"}));
    EXPECT_EQ(shaded(Names{"R", "N.X", "Z"}, "!N,*"), (Names{"R", "N.X", "Z"}));
}

TEST(ShadingLayers, RefuseAnEmptyPattern) {
    for (const char* const patterns : {"rgba,", ",rgba", "rgba,,N", "!"}) {
        EXPECT_EQ(failureOf([&] { ShadingLayers::parse(patterns); }),
                  fmt::format(
                      "wrong use: --shading-layers \"{}\" has an empty pattern; write layer names separated by commas, "
                      "such as \"rgba,light_*\".",
                      patterns));
    }
}

TEST(ShadingLayers, TellWholeLayersAndSingleChannelsThatStayAsTheyAre) {
    EXPECT_EQ(unshaded(Names{"R", "G", "B", "A", "Z", "N.X", "N.Y", "N.Z", "beauty.R", "beauty.Z", "crypto00.R",
                             "crypto00.A"}),
              (Names{"Z", "N", "beauty.Z", "crypto00"}));
}

TEST(ShadingLayers, DoNotTellOfAlphaUnlessThereIsNothingElse) {
    EXPECT_EQ(unshaded(Names{"A", "B", "G", "R"}), Names());
    EXPECT_EQ(unshaded(Names{"A"}), Names{"A"});
}

} // namespace
} // namespace Tools
