#include "DataSource.h"

#include <cmath>
#include <cstdint>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "DDImage/Substitute/Graph.h"
#include "LensDistortionCorrection.h"
#include "LensDistortionDataSource.h"
#include "Support/TestClip.h"

using namespace DD::Image;

namespace {

double halfDiagonal(double width, double height) { return std::hypot(width * 0.5 - 0.5, height * 0.5 - 0.5); }

double overscan(double frameWidth, double frameHeight, double width, double height) {
    return (halfDiagonal(frameWidth, frameHeight) / halfDiagonal(width, height) - 1.0) * 100.0;
}

// Single precision with a handful of operations on numbers around 100 %.
constexpr double c_overscanTolerance = 1e-4;

class DataSourceTest : public testing::Test {
protected:
    DataSourceTest() {
        clip->metaData.setData("input/timecode", std::string("01:00:00:10"));
        clip->metaData.setData("input/frame", std::int64_t{11});
        read->setFilename("/shots/A003.0011.exr");
        graph.connect(node, 0, read);
        graph.connect(node, 1, read);
    }

    /// The node is validated up to where the core misses a correction file.
    Core::FrameData validatedFrameData() {
        read->setSource(clip);
        graph.validate(node);
        Core::FrameData frameData;
        EXPECT_TRUE(dataSource.frameData(frameData));
        return frameData;
    }

    Graph graph;
    std::shared_ptr<TestClip> clip = std::make_shared<TestClip>(2000, 1000);
    Read* read = graph.createRead();
    LensDistortionCorrection* node =
        static_cast<LensDistortionCorrection*>(graph.create("OrvexLensDistortionCorrection"));
    LensDistortionDataSource dataSource{node};
};

} // namespace

TEST_F(DataSourceTest, CopiesATextThatJustFits) {
    char buffer[13] = {};
    EXPECT_TRUE(dataSource.clipFilePath(buffer, 13));
    EXPECT_STREQ(buffer, "/shots/A003");
}

TEST_F(DataSourceTest, LeavesTheBufferUntouchedWhenATextDoesNotFit) {
    char buffer[13] = "untouched";
    EXPECT_TRUE(dataSource.clipFilePath(buffer, 12)) << "11 characters and the terminating zero";
    std::string("untouched").copy(buffer, 10);
    buffer[9] = '\0';
    EXPECT_FALSE(dataSource.clipFilePath(buffer, 11));
    EXPECT_STREQ(buffer, "untouched");
}

TEST_F(DataSourceTest, NamesTheClipByTheLastElementOfItsPath) {
    std::string name;
    EXPECT_TRUE(dataSource.clipFileName(name));
    EXPECT_EQ(name, "A003");
}

TEST_F(DataSourceTest, HasNoClipNameWithoutAPlate) {
    graph.connect(node, 1, nullptr);
    char name[100] = "untouched";
    EXPECT_FALSE(dataSource.clipFileName(name, sizeof name));
    EXPECT_STREQ(name, "untouched");
}

TEST_F(DataSourceTest, HandsOverTheEmbeddedRecord) {
    clip->metaData.setData("exr/com.orvex.LensCorrection", std::string("{}"));
    read->setSource(clip);
    char record[3] = {};
    EXPECT_FALSE(dataSource.frameMetadata(record, 2));
    EXPECT_TRUE(dataSource.frameMetadata(record, 3));
    EXPECT_STREQ(record, "{}");
}

TEST_F(DataSourceTest, HasNoCorrectionFileUntilOneIsSelected) {
    std::string path = "untouched";
    EXPECT_FALSE(dataSource.correctionFilePath(path));
    EXPECT_EQ(path, "untouched");
    graph.userChange(node, "correctionFile::path", "/files/a.olcf");
    EXPECT_TRUE(dataSource.correctionFilePath(path));
    EXPECT_EQ(path, "/files/a.olcf");
}

TEST_F(DataSourceTest, FillsInTheFrame) {
    const Core::FrameData frameData = validatedFrameData();
    EXPECT_EQ(frameData.frameNumber, 0u) << "a timecode stands alone";
    EXPECT_EQ(frameData.frameRate, 0.0f);
    EXPECT_STREQ(frameData.timecode, "01:00:00:10");
    EXPECT_EQ(frameData.width, 2000u);
    EXPECT_EQ(frameData.height, 1000u);
    EXPECT_EQ(frameData.overscan, 0.0f);
}

TEST_F(DataSourceTest, CountsFramesWithoutATimecode) {
    clip->metaData.erase("input/timecode");
    const Core::FrameData frameData = validatedFrameData();
    EXPECT_EQ(frameData.frameNumber, 10u);
    EXPECT_STREQ(frameData.timecode, "");
}

TEST_F(DataSourceTest, FailsOnATimecodeOfSixteenCharacters) {
    clip->metaData.setData("input/timecode", std::string(15, '1'));
    EXPECT_STREQ(validatedFrameData().timecode, "111111111111111");
    clip->metaData.setData("input/timecode", std::string(16, '1'));
    read->setSource(clip);
    graph.validate(node);
    Core::FrameData frameData;
    frameData.width = 7;
    EXPECT_FALSE(dataSource.frameData(frameData));
    EXPECT_EQ(frameData.width, 7u) << "untouched";
}

TEST_F(DataSourceTest, FailsWithoutAPlate) {
    graph.connect(node, 1, nullptr);
    Core::FrameData frameData;
    EXPECT_FALSE(dataSource.frameData(frameData));
}

TEST_F(DataSourceTest, TakesTheOverscanFromTheBox) {
    clip->box = Box(-100, 0, 2100, 1000);
    const Core::FrameData frameData = validatedFrameData();
    EXPECT_EQ(frameData.width, 2200u);
    EXPECT_EQ(frameData.height, 1100u);
    EXPECT_NEAR(frameData.overscan, overscan(2200, 1100, 2000, 1000), c_overscanTolerance);
}

TEST_F(DataSourceTest, TakesTheOverscanFromTheFormat) {
    read->setSource(clip);
    graph.userChange(node, "inputOverscan::location", "Format");
    graph.userChange(node, "inputOverscan::amount", 10.0);
    const Core::FrameData frameData = validatedFrameData();
    EXPECT_EQ(frameData.width, 2000u);
    EXPECT_NEAR(frameData.overscan, overscan(2000, 1000, 1818, 909), c_overscanTolerance);
}

TEST_F(DataSourceTest, AddsTheBoxToTheOverscanInTheFormat) {
    clip->box = Box(-100, 0, 2100, 1000);
    read->setSource(clip);
    graph.userChange(node, "inputOverscan::location", "Format");
    graph.userChange(node, "inputOverscan::amount", 10.0);
    EXPECT_NEAR(validatedFrameData().overscan, overscan(2200, 1100, 1818, 909), c_overscanTolerance);
}

TEST_F(DataSourceTest, ShowsARemainingSizeThatIsNotFiniteAsTheNodesError) {
    read->setSource(clip);
    graph.userChange(node, "inputOverscan::location", "Format");
    graph.userChange(node, "inputOverscan::amount", -100.0);
    clip->metaData.setData("exr/com.orvex.LensCorrection",
                           std::string(R"({"recordingFormat":{"camera":{"manufacturer":"A","model":"B"},)"
                                       R"("clipResolution":{"width":2000,"height":1000},"imageRadius":15},)"
                                       R"("frameData":{"interpolationPoints":{"heights":[0,1,2,3,4,5],)"
                                       R"("shading":[9,8,7,6,5,4],"radialDistortion":[0,1,2,3,4,5]}}})"));
    read->setSource(clip);
    EXPECT_FALSE(graph.validate(node));
    EXPECT_EQ(graph.errorText(node),
              "Validating the frame failed: Error in function boost::math::round<float>(float): Value inf can not be "
              "represented in the target integer type.");
}

TEST_F(DataSourceTest, HasNoRecordingFormatUnlessEnteredByHand) {
    RecordingFormatDatabase::RecordingFormat format;
    format.imageRadius = 7.0f;
    EXPECT_FALSE(dataSource.recordingFormat(format));
    EXPECT_EQ(format.imageRadius, 7.0f) << "untouched";
}

TEST_F(DataSourceTest, HandsOverTheRecordingFormatEnteredByHand) {
    graph.userChange(node, "recordingFormat::manualSelection", 1);
    graph.userChange(node, "recordingFormat::imageAreaSize::width", 36);
    graph.userChange(node, "recordingFormat::imageAreaSize::height", 20.25);
    graph.userChange(node, "recordingFormat::clipResolution::width", 3840);
    graph.userChange(node, "recordingFormat::clipResolution::height", 2160);
    graph.openPanel(node);
    graph.userChange(node, "correctionMode", 0); // stores what the panel worked out
    RecordingFormatDatabase::RecordingFormat format;
    EXPECT_TRUE(dataSource.recordingFormat(format));
    EXPECT_EQ(format.imageAreaWidth, 36.0f);
    EXPECT_EQ(format.imageAreaHeight, 20.25f);
    EXPECT_EQ(format.clipResolutionWidth, 3840u);
    EXPECT_EQ(format.clipResolutionHeight, 2160u);
    EXPECT_FLOAT_EQ(format.imageRadius, 41.3f / 2.0f);
}

TEST_F(DataSourceTest, StopsOnAnOverscanLocationThatIsNone) {
    read->setSource(clip);
    graph.validate(read);
    node->knob("inputOverscan::location")->set_value(2);
    EXPECT_DEATH(
        {
            graph.validate(node);
            Core::FrameData frameData;
            dataSource.frameData(frameData);
        },
        "Assertion failed: false");
}
