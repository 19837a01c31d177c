#include "LensDistortionCorrection.h"

#include <gtest/gtest.h>

#include "DDImage/Substitute/Graph.h"
#include "LensDistortionDataSource.h"

using namespace DD::Image;

namespace {

class LensDistortionCorrectionTest : public testing::Test {
protected:
    Graph graph;
    LensDistortionCorrection* node =
        dynamic_cast<LensDistortionCorrection*>(graph.create("OrvexLensDistortionCorrection"));
};

} // namespace

TEST_F(LensDistortionCorrectionTest, IsCreatedByItsClassName) {
    ASSERT_NE(node, nullptr);
    EXPECT_STREQ(node->Class(), "OrvexLensDistortionCorrection");
}

TEST_F(LensDistortionCorrectionTest, CarriesTheBuildTag) {
    EXPECT_STREQ(LensDistortionCorrection::description.compiled, "Jul 31 2020 for 11.2v4");
}

TEST_F(LensDistortionCorrectionTest, HelpsWithItsNameAndVersionFirst) {
    EXPECT_EQ(std::string(node->node_help()).find("ORVEX Lens Distortion Correction v" ORVEX_VERSION "\n"), 0u);
    EXPECT_GT(std::string(node->node_help()).length(),
              std::string("ORVEX Lens Distortion Correction v" ORVEX_VERSION "\n").length());
}

TEST_F(LensDistortionCorrectionTest, OffersBothDirections) {
    EXPECT_EQ(node->knob("correctionMode")->entries(), (std::vector<std::string>{"Undistort", "Distort"}));
    EXPECT_EQ(node->knob("correctionMode")->tooltip(),
              "Select the correction mode to either distort or undistort the footage.");
}

TEST_F(LensDistortionCorrectionTest, KeepsItsOutputTypeHidden) {
    EXPECT_EQ(node->knob("outputType")->entries(), (std::vector<std::string>{"Image", "STMap"}));
    EXPECT_EQ(node->knob("outputType")->tooltip(),
              "Select the output type to render either the corrected image or a displacement map.");
    graph.openPanel(node);
    EXPECT_FALSE(node->knob("outputType")->isVisible());
}

TEST_F(LensDistortionCorrectionTest, AsksForTheInverseWithoutAMapWhenDistorting) {
    graph.userChange(node, "correctionMode", "Distort");
    Core::DistortionCorrectionParameter parameter{false, true};
    EXPECT_TRUE(LensDistortionDataSource(node).shouldPerformDistortionCorrection(parameter));
    EXPECT_TRUE(parameter.distort);
    EXPECT_FALSE(parameter.renderMap);
}

TEST_F(LensDistortionCorrectionTest, AsksForTheCorrectionByDefault) {
    Core::DistortionCorrectionParameter parameter{true, true};
    EXPECT_TRUE(LensDistortionDataSource(node).shouldPerformDistortionCorrection(parameter));
    EXPECT_FALSE(parameter.distort);
    EXPECT_FALSE(parameter.renderMap);
}

TEST_F(LensDistortionCorrectionTest, AsksForAMapWhenTheHiddenControlSaysSo) {
    graph.userChange(node, "outputType", "STMap");
    Core::DistortionCorrectionParameter parameter;
    EXPECT_TRUE(LensDistortionDataSource(node).shouldPerformDistortionCorrection(parameter));
    EXPECT_TRUE(parameter.renderMap);
}

TEST_F(LensDistortionCorrectionTest, NeverAsksForShading) {
    Core::ShadingCorrectionParameter parameter{true, true};
    EXPECT_FALSE(LensDistortionDataSource(node).shouldPerformShadingCorrection(parameter));
    EXPECT_TRUE(parameter.addShading && parameter.renderMap) << "untouched";
}

TEST_F(LensDistortionCorrectionTest, SharesOneLogFilePath) {
    EXPECT_STREQ(LensDistortionCorrection::logFilePath, "/tmp/com.orvex.LensCorrection.Distortion.Nuke.log");
}
