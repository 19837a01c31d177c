#include "Plot/LensReport.h"

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Support/CorrectionFileText.h"
#include "Support/FailureText.h"
#include "Support/TemporaryFolder.h"

using Support::CorrectionFileText;
using testing::HasSubstr;
using testing::Not;
using Tools::CorrectionFileData;
using Tools::LensReport;

namespace {

const char* const badLine = "5;0,1,1,2,3,4,5;100,99,98,97,96,95,94;0,0,0,0,0,0,0;;;;;;10.00.00.00"; // equal heights

std::string html(const CorrectionFileText& text) {
    const Support::TemporaryFolder folder;
    return LensReport(CorrectionFileData::read(folder.write("a.olcf", text.string()))).html();
}

} // namespace

TEST(LensReport, drawsOneLineForFramesThatAreAllEqual) {
    const std::string page = html(CorrectionFileText().withFrame(1, "00.00.00.00").withFrame(2, "00.00.00.01"));
    EXPECT_THAT(page, HasSubstr("data-series=\"all frames\""));
    EXPECT_THAT(page, Not(HasSubstr("data-series=\"frame ")));
}

TEST(LensReport, drawsTheFirstAndTheLastOfDifferentFrames) {
    const std::string page =
        html(CorrectionFileText()
                 .withFrame(1, "00.00.00.00")
                 .withFrameLine(
                     "2;0,3,6,9,12,15,18;100,99.5,98,96,93,89,80;0,-0.1,-0.4,-0.9,-1.6,-2.5,-3.6;;;;;;00.00.00.01"));
    EXPECT_THAT(page, HasSubstr("data-series=\"frame 1\""));
    EXPECT_THAT(page, HasSubstr("data-series=\"frame 2\""));
}

TEST(LensReport, leavesOutFramesWithoutAFitAndSaysSo) {
    EXPECT_THAT(
        html(CorrectionFileText().withFrame(1, "00.00.00.00").withFrameLine(badLine)),
        HasSubstr("No curve can be fitted for 1 of 2 frames, the first being frame 5; they cannot be corrected."));
}

TEST(LensReport, isNoneWhenNoFrameCanBeFitted) {
    EXPECT_THAT(failureOf([] { html(CorrectionFileText().withFrameLine(badLine)); }),
                HasSubstr("no frame's curves can be fitted. Run \"lenscorrect check\" on it for the reasons."));
}

TEST(LensReport, givesLengthsOnTheSensorWhenTheFormatIsUnknown) {
    const std::string page = html(CorrectionFileText().with("sensorWidth", "0").withFrame(1, "00.00.00.00"));
    EXPECT_THAT(page, HasSubstr("recorded − corrected [µm]"));
}

TEST(LensReport, leavesOutNamesThatTheHeaderDoesNotGive) {
    const std::string page = html(CorrectionFileText()
                                      .with("lensManufacturer", "")
                                      .with("lensTypeName", "")
                                      .with("cameraManufacturer", "")
                                      .with("cameraModel", "")
                                      .with("videoFileName", "A001")
                                      .withFrame(1, "00.00.00.00"));
    EXPECT_THAT(page, HasSubstr("<h1>Unknown lens</h1>\n<p class=\"lead\">clip A001, frames 1–1</p>"));
}

TEST(LensReport, thinsOutALongClip) {
    CorrectionFileText text;
    for (int frame = 0; frame < 1000; ++frame) text.withFrame(frame, "00.00.00.00");
    EXPECT_THAT(html(text), HasSubstr("show 400 of its 1000 frames"));
}
