#include "LensShadingCorrection.h"

#include <gtest/gtest.h>

#include "DDImage/Substitute/Graph.h"
#include "LensShadingDataSource.h"

using namespace DD::Image;

namespace {

class LensShadingCorrectionTest : public testing::Test {
protected:
    Graph graph;
    LensShadingCorrection* node = dynamic_cast<LensShadingCorrection*>(graph.create("OrvexLensShadingCorrection"));
};

} // namespace

TEST_F(LensShadingCorrectionTest, IsCreatedByItsClassName) {
    ASSERT_NE(node, nullptr);
    EXPECT_STREQ(node->Class(), "OrvexLensShadingCorrection");
}

TEST_F(LensShadingCorrectionTest, CarriesTheBuildTag) {
    EXPECT_STREQ(LensShadingCorrection::description.compiled, "Jul 31 2020 for 11.2v4");
}

TEST_F(LensShadingCorrectionTest, HelpsWithItsNameAndVersionFirst) {
    EXPECT_EQ(std::string(node->node_help()).find("ORVEX Lens Shading Correction v" ORVEX_VERSION "\n"), 0u);
    EXPECT_GT(std::string(node->node_help()).length(),
              std::string("ORVEX Lens Shading Correction v" ORVEX_VERSION "\n").length());
}

TEST_F(LensShadingCorrectionTest, OffersBothDirections) {
    EXPECT_EQ(node->knob("correctionMode")->entries(), (std::vector<std::string>{"Remove Shading", "Add Shading"}));
    EXPECT_EQ(node->knob("correctionMode")->tooltip(),
              "Select the correction mode to either add or remove shading from the footage.");
}

TEST_F(LensShadingCorrectionTest, ShowsItsOutputType) {
    EXPECT_EQ(node->knob("outputType")->entries(), (std::vector<std::string>{"Image", "Map"}));
    EXPECT_EQ(node->knob("outputType")->tooltip(),
              "Select the output type to render either the corrected image or a multiply map.");
    EXPECT_TRUE(node->knob("outputType")->isVisible());
}

TEST_F(LensShadingCorrectionTest, AsksForAMapWithoutTheInverseWhenRemovingShading) {
    graph.userChange(node, "outputType", "Map");
    Core::ShadingCorrectionParameter parameter{true, false};
    EXPECT_TRUE(LensShadingDataSource(node).shouldPerformShadingCorrection(parameter));
    EXPECT_FALSE(parameter.addShading);
    EXPECT_TRUE(parameter.renderMap);
}

TEST_F(LensShadingCorrectionTest, AsksForTheInverseWhenAddingShading) {
    graph.userChange(node, "correctionMode", "Add Shading");
    Core::ShadingCorrectionParameter parameter{false, true};
    EXPECT_TRUE(LensShadingDataSource(node).shouldPerformShadingCorrection(parameter));
    EXPECT_TRUE(parameter.addShading);
    EXPECT_FALSE(parameter.renderMap);
}

TEST_F(LensShadingCorrectionTest, NeverAsksForDistortion) {
    Core::DistortionCorrectionParameter parameter{true, true};
    EXPECT_FALSE(LensShadingDataSource(node).shouldPerformDistortionCorrection(parameter));
    EXPECT_TRUE(parameter.distort && parameter.renderMap) << "untouched";
}

TEST_F(LensShadingCorrectionTest, SharesOneLogFilePath) {
    EXPECT_STREQ(LensShadingCorrection::logFilePath, "/tmp/com.orvex.LensCorrection.Shading.Nuke.log");
}
