#include "LayerContent.h"

#include <initializer_list>

#include <gtest/gtest.h>

using namespace DD::Image;

namespace {

bool isColor(std::initializer_list<const char*> names) {
    ChannelSet channels;
    for (const char* const name : names) channels += channel(name);
    return LayerContent::isColor(channels);
}

} // namespace

TEST(LayerContent, IsColorWithRedGreenAndBlue) {
    EXPECT_TRUE(isColor({"rgba.red", "rgba.green", "rgba.blue", "rgba.alpha"}));
    EXPECT_TRUE(isColor({"diffuse.red", "diffuse.green", "diffuse.blue"}));
    EXPECT_TRUE(isColor({"left.spec.red", "left.spec.alpha"}));
}

TEST(LayerContent, IsNotColorWithAlphaAlone) { EXPECT_FALSE(isColor({"rgba.alpha"})); }

TEST(LayerContent, IsNotColorWithAnyOtherChannel) {
    EXPECT_FALSE(isColor({"depth.Z"}));
    EXPECT_FALSE(isColor({"forward.u", "forward.v"}));
    EXPECT_FALSE(isColor({"mixed.red", "mixed.id"}));
    EXPECT_FALSE(isColor({}));
}

TEST(LayerContent, IsNotColorInLayersNamedAsData) {
    for (const char* const layer : {"crypto00", "CryptoMaterial01", "uCryptoObject", "ID", "objectID", "material_id",
                                    "depth", "N", "left.P", "motion", "world_position"}) {
        const std::string name = layer;
        EXPECT_FALSE(isColor({(name + ".red").c_str(), (name + ".green").c_str(), (name + ".blue").c_str()})) << name;
    }
}

TEST(LayerContent, IsColorInLayersWhoseNamesJustContainOneOfData) {
    for (const char* const layer : {"grid", "Beauty", "spline", "solid", "depthless"}) {
        EXPECT_TRUE(isColor({(std::string(layer) + ".red").c_str()})) << layer;
    }
}
