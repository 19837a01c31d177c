#include "Render/CorrectionMark.h"

#include <gtest/gtest.h>

namespace Tools {
namespace {

ChainSettings undistort() {
    ChainSettings options;
    options.distortion = ChainSettings::Distortion::Undistort;
    return options;
}

ChainSettings distort() {
    ChainSettings options;
    options.distortion = ChainSettings::Distortion::Distort;
    return options;
}

Image::Frame frameMarkedBy(const ChainSettings& options) {
    Image::Frame frame;
    frame.parts.resize(2);
    CorrectionMark::write(options, "/shots/A001.olcf", frame);
    return frame;
}

TEST(CorrectionMark, StandsInEveryPart) {
    for (const Image::Part& part : frameMarkedBy(undistort()).parts) {
        std::string mark;
        for (const Image::Attribute& attribute : part.attributes)
            mark += attribute.name + " (" + attribute.type + ") = " + attribute.value + "\n";
        EXPECT_EQ(mark,
                  "com.orvex.lenscorrect.distortion (string) = undistort\n"
                  "com.orvex.lenscorrect.correctionFile (string) = /shots/A001.olcf\n"
                  "com.orvex.lenscorrect.version (string) = " ORVEX_VERSION "\n");
    }
}

TEST(CorrectionMark, TellsWhatTheShadingCorrectionLeftAsItIsInEachPart) {
    ChainSettings options;
    options.shading = ChainSettings::Shading::Remove;
    Image::Frame frame;
    frame.parts.resize(2);
    for (const char* const name : {"R", "N.X", "Z"}) frame.parts[0].channels.emplace_back().name = name;
    frame.parts[1].channels.emplace_back().name = "R";
    frame.parts[1].setAttribute({"com.orvex.lenscorrect.unshaded", "string", "of an earlier job"});
    CorrectionMark::write(options, "", frame);
    EXPECT_EQ(frame.parts[0].text("com.orvex.lenscorrect.unshaded"), "N, Z");
    EXPECT_EQ(frame.parts[1].findAttribute("com.orvex.lenscorrect.unshaded"), nullptr);
}

TEST(CorrectionMark, SpeaksAgainstTheSameCorrectionASecondTime) {
    EXPECT_EQ(CorrectionMark::objection(undistort(), frameMarkedBy(undistort())),
              "It is already marked with this correction (com.orvex.lenscorrect.distortion = \"undistort\"). Use the "
              "original, or give --force to correct it again.");
}

TEST(CorrectionMark, LetsTheOppositeDirectionPass) {
    EXPECT_EQ(CorrectionMark::objection(distort(), frameMarkedBy(undistort())), "");
}

TEST(CorrectionMark, LetsAFrameWithoutAMarkPass) {
    Image::Frame frame;
    frame.parts.resize(1);
    EXPECT_EQ(CorrectionMark::objection(undistort(), frame), "");
}

TEST(CorrectionMark, ForgetsTheCorrectionFileOfAnEarlierCorrection) {
    Image::Frame frame = frameMarkedBy(undistort());
    CorrectionMark::write(distort(), "", frame);
    EXPECT_EQ(frame.parts[0].findAttribute("com.orvex.lenscorrect.correctionFile"), nullptr);
}

} // namespace
} // namespace Tools
