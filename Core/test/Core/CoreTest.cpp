// What the facade does before any device is needed. CoreRenderTest.cpp goes on from there.

#include "Core/Core.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <boost/algorithm/string/replace.hpp>
#include <boost/lexical_cast/bad_lexical_cast.hpp>
#include <cstring>
#include <limits>
#include <string>
#include <thread>

#include "Core/FakeCoreDataSource.h"
#include "Support/CommaLocale.h"
#include "Support/CorrectionFileText.h"
#include "Support/JsonRecord.h"
#include "Support/TemporaryFolder.h"

using Support::frameOf;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();
constexpr float infinity = std::numeric_limits<float>::infinity();

class CoreFacadeTest : public testing::Test {
protected:
    Support::HostFrame m_host;
    Core::Core m_core{std::make_unique<Support::FakeCoreDataSource>(m_host)};

    /// A frame of 1920 × 1080 px whose distortion is wanted, with a user's recording format and a JSON record.
    void givenFrameWithJsonRecord() {
        m_host.distortion.emplace();
        m_host.frameData = frameOf(1920, 1080);
        m_host.frameMetadata = Support::jsonRecord;
        m_host.recordingFormat = {24.0f, 13.5f, 1920, 1080, 13.77f};
    }

    bool frameSize() {
        unsigned int width = 0;
        unsigned int height = 0;
        return m_core.frameSize(width, height);
    }

    std::string brief() const { return Support::briefErrorOf(m_core); }
    std::string detailed() const { return Support::detailedErrorOf(m_core); }

    std::string failureOfFrameSize() {
        EXPECT_FALSE(frameSize());
        return detailed();
    }

    /// Of the header, a rate other than which would need a conversion.
    static std::string conversionFailure(const std::string& frameRate, const std::string& fileRate) {
        return "Frame number could not be converted to the frame rate of the correction data.\nFrame Number: 10\n"
               "Frame Rate: " +
               frameRate + "\nFrame Rate of the Correction Data: " + fileRate + "\n";
    }
};

class CoreFileTest : public CoreFacadeTest {
protected:
    const Support::TemporaryFolder m_folder;

    /// Five levels down, so that a search up the ancestors ends in the temporary folder.
    static std::string deep(const std::string& name) { return "1/2/3/4/5/" + name; }

    /// The clip A001C002.mov with its correction file beside it; 4096 × 2160 px.
    void givenClip(Support::CorrectionFileText text) {
        m_host.distortion.emplace();
        m_host.frameData = frameOf(4096, 2160);
        m_host.clipFilePath = m_folder.path(deep("A001C002.mov"));
        m_folder.write(deep("A001C002.olcf"), text.string());
    }

    void givenSelectedFile(const std::string& name, const std::string& sensorWidth) {
        m_host.clipFileName = "A001C002.mov";
        m_host.correctionFilePath =
            m_folder.write(name, Support::CorrectionFileText().with("sensorWidth", sensorWidth).string());
    }

    /// Of the implied recording format; 0 on failure.
    static float imageAreaWidth(Core::Core& core) {
        RecordingFormatDatabase::RecordingFormat format;
        core.recordingFormat(format);
        return format.imageAreaWidth;
    }

    float imageAreaWidthOfAnotherFacade() const {
        Core::Core other(std::make_unique<Support::FakeCoreDataSource>(m_host));
        return imageAreaWidth(other);
    }
};

} // namespace

TEST_F(CoreFacadeTest, FrameSizeSucceedsWithoutFurtherQuestionsWhenNoCorrectionIsWanted) {
    unsigned int width = 12;
    unsigned int height = 34;
    EXPECT_TRUE(m_core.frameSize(width, height));
    EXPECT_THAT(m_host.questions, ElementsAre("shading", "distortion"));
    EXPECT_EQ(width, 12u);
    EXPECT_EQ(height, 34u);
}

TEST_F(CoreFacadeTest, RenderSucceedsWithoutFurtherQuestionsWhenNoCorrectionIsWanted) {
    float output[4] = {1.0f, 2.0f, 3.0f, 4.0f};
    EXPECT_TRUE(m_core.render(nullptr, output, sizeof(output)));
    EXPECT_THAT(m_host.questions, ElementsAre("shading", "distortion"));
    EXPECT_THAT(output, ElementsAre(1.0f, 2.0f, 3.0f, 4.0f));
}

TEST_F(CoreFacadeTest, AsksForClipAndCorrectionDataInOrderAndWithBuffersOf4096Bytes) {
    givenFrameWithJsonRecord();
    m_host.frameData.reset();
    frameSize();
    EXPECT_THAT(m_host.questions,
                ElementsAre("shading", "distortion", "correctionFilePath 4096", "clipFileName 4096",
                            "frameMetadata 4096", "clipFilePath 4096", "recordingFormat", "frameData"));
}

TEST_F(CoreFacadeTest, ServesADataSourceThatCallsItBack) {
    class CallingSource : public Support::FakeCoreDataSource {
    public:
        using FakeCoreDataSource::FakeCoreDataSource;
        Core::Core* core = nullptr;
        mutable int successes = 0;

        bool recordingFormat(RecordingFormatDatabase::RecordingFormat& format) const override {
            RecordingFormatDatabase::RecordingFormat implied;
            if (core->recordingFormat(implied)) ++successes;
            return FakeCoreDataSource::recordingFormat(format);
        }
    };
    givenFrameWithJsonRecord();
    m_host.frameData.reset();
    auto ownedSource = std::make_unique<CallingSource>(m_host);
    CallingSource& source = *ownedSource;
    Core::Core core(std::move(ownedSource));
    source.core = &core;
    EXPECT_FALSE(core.render(nullptr, nullptr, 0));
    EXPECT_EQ(source.successes, 1);
    EXPECT_EQ(Support::briefErrorOf(core), "There is some frame related data missing.");
}

TEST_F(CoreFacadeTest, FailsWithoutClipAndCorrectionData) {
    m_host.shading.emplace();
    EXPECT_EQ(failureOfFrameSize(), "There is some clip and correction file related data missing.\n");
}

TEST_F(CoreFacadeTest, NamesTheCorrectionFileThatLacksAClipName) {
    m_host.shading.emplace();
    m_host.correctionFilePath = "/files/A001.olcf";
    EXPECT_EQ(failureOfFrameSize(),
              "There is some clip and correction file related data missing.\n"
              "Correction File Path: \"/files/A001.olcf\"\n");
}

TEST_F(CoreFacadeTest, NamesTheClipThatLacksACorrectionFile) {
    m_host.shading.emplace();
    m_host.clipFileName = "A001.mov";
    EXPECT_EQ(failureOfFrameSize(),
              "There is some clip and correction file related data missing.\nClip File Name: \"A001.mov\"\n");
}

TEST_F(CoreFacadeTest, TakesEmptyTextsForMissingOnes) {
    m_host.shading.emplace();
    m_host.correctionFilePath = m_host.clipFileName = m_host.frameMetadata = m_host.clipFilePath = "";
    EXPECT_EQ(failureOfFrameSize(), "There is some clip and correction file related data missing.\n");
}

TEST_F(CoreFacadeTest, TakesATextThatDoesNotFitForMissing) {
    m_host.shading.emplace();
    m_host.frameMetadata = std::string(4096, ' ');
    EXPECT_EQ(failureOfFrameSize(), "There is some clip and correction file related data missing.\n");
}

TEST_F(CoreFacadeTest, PrefersACorrectionFileWithAClipNameOverEverythingElse) {
    givenFrameWithJsonRecord();
    m_host.recordingFormat.reset();
    m_host.clipFilePath = "/nowhere/B.mov";
    m_host.clipFileName = "A.mov";
    m_host.correctionFilePath = "/nowhere/A.olcf";
    EXPECT_EQ(failureOfFrameSize(),
              "Header of the metadata is not available. Correction file could not be read.\n"
              "Clip File Name: \"A.mov\"\nCorrection File Path: \"/nowhere/A.olcf\"\n");
}

TEST_F(CoreFacadeTest, PrefersTheFramesOwnRecordOverTheClipsPath) {
    givenFrameWithJsonRecord();
    m_host.recordingFormat.reset();
    m_host.clipFilePath = "/nowhere/B.mov";
    m_host.frameMetadata = "{]";
    EXPECT_EQ(failureOfFrameSize(), "Metadata for the frame is not available.\nJSON String: \"{]\"\n");
}

TEST_F(CoreFacadeTest, FollowsAChangedRecord) {
    m_host.frameMetadata = Support::jsonRecord;
    RecordingFormatDatabase::RecordingFormat format;
    ASSERT_TRUE(m_core.recordingFormat(format));
    EXPECT_EQ(format.clipResolutionWidth, 4096u);
    m_host.frameMetadata = boost::replace_first_copy(Support::jsonRecord, "4096", "2048");
    ASSERT_TRUE(m_core.recordingFormat(format));
    EXPECT_EQ(format.clipResolutionWidth, 2048u);
}

TEST_F(CoreFacadeTest, RecordingFormatIsWhatTheCorrectionDataImplyWhateverTheUserChose) {
    givenFrameWithJsonRecord();
    RecordingFormatDatabase::RecordingFormat format;
    EXPECT_TRUE(m_core.recordingFormat(format));
    EXPECT_EQ(format.clipResolutionWidth, 4096u);
    EXPECT_THAT(m_host.questions, testing::Not(testing::Contains("recordingFormat")));
}

TEST_F(CoreFacadeTest, RecordingFormatMayBeUnknown) {
    m_host.frameMetadata =
        boost::replace_first_copy(boost::replace_first_copy(Support::jsonRecord, "15.0", "0"), "ALEXA Mini", "Unknown");
    RecordingFormatDatabase::RecordingFormat format;
    EXPECT_TRUE(m_core.recordingFormat(format)) << detailed();
    EXPECT_EQ(format.clipResolutionWidth, 4096u);
    EXPECT_EQ(format.imageRadius, 0.0f);
}

TEST_F(CoreFacadeTest, RecordingFormatLeavesItsOutputUntouchedOnFailure) {
    RecordingFormatDatabase::RecordingFormat format;
    format.clipResolutionWidth = 7;
    EXPECT_FALSE(m_core.recordingFormat(format));
    EXPECT_EQ(format.clipResolutionWidth, 7u);
    EXPECT_EQ(brief(), "There is some clip and correction file related data missing.");
}

TEST_F(CoreFacadeTest, NeedsClipDataEvenWhenTheUserChoseARecordingFormat) {
    givenFrameWithJsonRecord();
    m_host.frameMetadata.reset();
    EXPECT_EQ(failureOfFrameSize(), "There is some clip and correction file related data missing.\n");
}

TEST_F(CoreFacadeTest, RejectsAnIncompleteRecordingFormatAndNamesIt) {
    givenFrameWithJsonRecord();
    m_host.recordingFormat = {23.76f, 13.37f, 2880, 0, 13.6317f};
    EXPECT_EQ(failureOfFrameSize(),
              "There is no valid data available for the recording format.\nImage Area Size: 23.76x13.37 mm\n"
              "Clip Resolution: 2880x0 px\nImage Radius: 13.6317 mm\n");
    m_host.recordingFormat = {23.76f, 13.37f, 0, 1620, 13.6317f};
    EXPECT_EQ(failureOfFrameSize(),
              "There is no valid data available for the recording format.\nImage Area Size: 23.76x13.37 mm\n"
              "Clip Resolution: 0x1620 px\nImage Radius: 13.6317 mm\n");
}

TEST_F(CoreFacadeTest, RejectsARecordingFormatWithoutAUsableImageRadius) {
    givenFrameWithJsonRecord();
    for (const float radius : {0.0f, -1.0f, notANumber, infinity}) {
        m_host.recordingFormat->imageRadius = radius;
        frameSize();
        EXPECT_EQ(brief(), "There is no valid data available for the recording format.") << radius;
    }
}

TEST_F(CoreFacadeTest, RejectsAJsonRecordOfAnEmptyClip) {
    givenFrameWithJsonRecord();
    m_host.recordingFormat.reset();
    m_host.frameMetadata =
        boost::replace_first_copy(boost::replace_first_copy(Support::jsonRecord, "4096", "0"), "2160", "0");
    frameSize();
    EXPECT_EQ(brief(), "There is no valid data available for the recording format.");
}

TEST_F(CoreFacadeTest, FailsWithoutFrameData) {
    givenFrameWithJsonRecord();
    m_host.frameData.reset();
    EXPECT_EQ(failureOfFrameSize(), "There is some frame related data missing.\n");
}

TEST_F(CoreFacadeTest, RejectsAFrameWithoutWidthOrHeight) {
    givenFrameWithJsonRecord();
    m_host.frameData = frameOf(0, 0);
    EXPECT_EQ(failureOfFrameSize(), "There is some frame related data missing.\nCurrent Frame Resolution: 0x0 px\n");
    m_host.frameData = frameOf(1, 0);
    EXPECT_EQ(failureOfFrameSize(), "There is some frame related data missing.\nCurrent Frame Resolution: 1x0 px\n");
}

TEST_F(CoreFacadeTest, RejectsAFrameTwoPixelsOffTheRecordingFormatsAspectRatio) {
    givenFrameWithJsonRecord();
    m_host.frameData = frameOf(1920, 1082);
    EXPECT_EQ(failureOfFrameSize(),
              "Aspect ratio of the current frame is not as expected. Recommended resolution is 1920x1080 px.\n"
              "Current Frame Resolution: 1920x1082 px\nRecording Format Resolution: 1920x1080 px\n");
    m_host.frameData = frameOf(1920, 1078);
    EXPECT_EQ(failureOfFrameSize(),
              "Aspect ratio of the current frame is not as expected. Recommended resolution is 1920x1080 px.\n"
              "Current Frame Resolution: 1920x1078 px\nRecording Format Resolution: 1920x1080 px\n");
}

TEST_F(CoreFacadeTest, RoundsTheExpectedHeightUp) {
    givenFrameWithJsonRecord();
    m_host.recordingFormat = {24.0f, 10.0f, 1000, 333, 13.0f};
    m_host.frameData = frameOf(100, 36);
    frameSize();
    EXPECT_THAT(brief(), HasSubstr("Recommended resolution is 100x34 px.")) << "33.3 px";
}

TEST_F(CoreFacadeTest, SurvivesTheLargestClipSizes) {
    givenFrameWithJsonRecord();
    m_host.recordingFormat = {24.0f, 13.5f, 1, 4294967295u, 13.77f};
    m_host.frameData = frameOf(4294967295u, 1080);
    frameSize();
    EXPECT_THAT(brief(), HasSubstr("Recommended resolution is 4294967295x4294967295 px."));
    m_host.recordingFormat = {24.0f, 13.5f, 4294967295u, 1, 13.77f};
    frameSize();
    EXPECT_THAT(brief(), HasSubstr("Recommended resolution is 4294967295x1 px."));
}

TEST_F(CoreFacadeTest, WritesNumbersWhateverTheGlobalLocale) {
    const Support::CommaLocale comma;
    givenFrameWithJsonRecord();
    m_host.frameData = frameOf(1920, 1082);
    frameSize();
    EXPECT_EQ(brief(), "Aspect ratio of the current frame is not as expected. Recommended resolution is 1920x1080 px.");
}

TEST_F(CoreFileTest, FindsTheFileOfAClipThatIsKnownByItsPath) {
    givenClip(Support::CorrectionFileText());
    RecordingFormatDatabase::RecordingFormat format;
    EXPECT_TRUE(m_core.recordingFormat(format)) << detailed();
    EXPECT_EQ(format.imageAreaWidth, 36.7f);
}

TEST_F(CoreFileTest, TakesTheFileThatTheUserSelected) {
    m_host.clipFileName = "A001C002.mov";
    m_host.correctionFilePath = m_folder.write("selected.txt", Support::CorrectionFileText().string());
    RecordingFormatDatabase::RecordingFormat format;
    EXPECT_TRUE(m_core.recordingFormat(format)) << detailed();
    EXPECT_EQ(format.imageAreaWidth, 36.7f);
}

TEST_F(CoreFileTest, RejectsASelectedFileOfAnotherClip) {
    m_host.clipFileName = "B.mov";
    m_host.correctionFilePath = m_folder.write("selected.olcf", Support::CorrectionFileText().string());
    RecordingFormatDatabase::RecordingFormat format;
    EXPECT_FALSE(m_core.recordingFormat(format));
    EXPECT_EQ(brief(), "Header of the metadata is not available. Correction file does not belong to the clip.");
}

TEST_F(CoreFileTest, SearchesOneLevelBelowTheClip) {
    m_host.clipFilePath = m_folder.write(deep("A001C002.mov"), "");
    m_folder.write(deep("x/A001C002.olcf"), Support::CorrectionFileText().string());
    EXPECT_EQ(imageAreaWidth(m_core), 36.7f) << detailed();
}

TEST_F(CoreFileTest, SearchesTwoLevelsBelowEachOfFiveAncestors) {
    m_host.clipFilePath = m_folder.write(deep("A001C002.mov"), "");
    m_folder.write("x/y/A001C002.olcf", Support::CorrectionFileText().string());
    EXPECT_EQ(imageAreaWidth(m_core), 36.7f) << detailed();
}

TEST_F(CoreFileTest, SearchesNeitherDeeperNorFurtherUp) {
    m_host.clipFilePath = m_folder.write("up/" + deep("A001C002.mov"), "");
    for (const std::string& path : {deep("x/y/A001C002.olcf"), std::string("x/y/z/A001C002.olcf")}) {
        m_folder.write("up/" + path, Support::CorrectionFileText().string());
    }
    m_folder.write("A001C002.olcf", Support::CorrectionFileText().string());
    EXPECT_EQ(imageAreaWidth(m_core), 0.0f);
    EXPECT_EQ(brief(), "Header of the metadata is not available. Correction file could not be found.");
}

TEST_F(CoreFileTest, SharesParsedFilesBetweenFacades) {
    givenClip(Support::CorrectionFileText());
    RecordingFormatDatabase::RecordingFormat format;
    ASSERT_TRUE(m_core.recordingFormat(format));
    m_folder.write(deep("A001C002.olcf"), "changed since");
    Core::Core other(std::make_unique<Support::FakeCoreDataSource>(m_host));
    EXPECT_TRUE(other.recordingFormat(format)) << "the other facade has read the file again";
}

TEST_F(CoreFileTest, KeepsTheHundredFilesThatWereParsedLast) {
    givenSelectedFile("0.olcf", "24");
    EXPECT_EQ(imageAreaWidthOfAnotherFacade(), 24.0f);
    for (int i = 1; i < 100; ++i) {
        givenSelectedFile(std::to_string(i) + ".olcf", "24");
        imageAreaWidthOfAnotherFacade();
    }
    givenSelectedFile("0.olcf", "36");
    EXPECT_EQ(imageAreaWidthOfAnotherFacade(), 24.0f) << "still what was parsed first";
    givenSelectedFile("100.olcf", "24");
    imageAreaWidthOfAnotherFacade();
    givenSelectedFile("0.olcf", "36");
    EXPECT_EQ(imageAreaWidthOfAnotherFacade(), 36.0f) << "parsed again";
}

TEST_F(CoreFileTest, KeepsAClipsRecordingFormatWhileTheClipStaysTheSame) {
    givenSelectedFile("0.olcf", "24");
    EXPECT_EQ(imageAreaWidth(m_core), 24.0f);
    for (int i = 1; i <= 100; ++i) {
        givenSelectedFile(std::to_string(i) + ".olcf", "24");
        imageAreaWidthOfAnotherFacade();
    }
    givenSelectedFile("0.olcf", "36");
    EXPECT_EQ(imageAreaWidth(m_core), 24.0f);
    EXPECT_EQ(imageAreaWidthOfAnotherFacade(), 36.0f) << "the file itself was parsed again";
}

TEST_F(CoreFileTest, FollowsAChangedSelection) {
    givenSelectedFile("0.olcf", "24");
    EXPECT_EQ(imageAreaWidth(m_core), 24.0f);
    givenSelectedFile("1.olcf", "36");
    EXPECT_EQ(imageAreaWidth(m_core), 36.0f);
    m_host.clipFileName = "a001c002.mov";
    EXPECT_EQ(imageAreaWidth(m_core), 0.0f);
    EXPECT_EQ(brief(), "Header of the metadata is not available. Correction file does not belong to the clip.");
}

TEST_F(CoreFileTest, FollowsAChangedClip) {
    givenClip(Support::CorrectionFileText());
    EXPECT_EQ(imageAreaWidth(m_core), 36.7f);
    m_host.clipFilePath = m_folder.path(deep("B.mov"));
    EXPECT_EQ(imageAreaWidth(m_core), 0.0f);
}

TEST_F(CoreFileTest, FollowsAChangeFromAClipToARecordOfTheSameText) {
    givenClip(Support::CorrectionFileText());
    EXPECT_EQ(imageAreaWidth(m_core), 36.7f);
    m_host.frameMetadata = m_host.clipFilePath;
    EXPECT_EQ(imageAreaWidth(m_core), 0.0f);
    EXPECT_EQ(brief(), "Metadata for the frame is not available.");
}

TEST_F(CoreFileTest, LooksForAMissingFileAgainAtTheNextCall) {
    m_folder.makeFolder(deep(""));
    m_host.clipFilePath = m_folder.path(deep("A001C002.mov"));
    RecordingFormatDatabase::RecordingFormat format;
    ASSERT_FALSE(m_core.recordingFormat(format));
    m_folder.write(deep("A001C002.olcf"), Support::CorrectionFileText().string());
    EXPECT_TRUE(m_core.recordingFormat(format)) << detailed();
}

TEST_F(CoreFileTest, LetsAConversionFailureOfTheFilePass) {
    givenClip(Support::CorrectionFileText().withFrame(0, "10.00.00.00").withFrameLine("one;;;;;;;;;"));
    EXPECT_THROW(frameSize(), boost::bad_lexical_cast);
    EXPECT_EQ(brief(), "no error");
}

TEST_F(CoreFileTest, LooksAFrameUpByNumberWhenItHasNoTimecode) {
    givenClip(Support::CorrectionFileText().withFrame(100, "10.00.00.00"));
    m_host.frameData->frameNumber = 99;
    frameSize();
    EXPECT_THAT(detailed(), HasSubstr("Frame Number: 99\n"));
}

TEST_F(CoreFileTest, LooksAFrameUpByNumberWhenTheFileHasNoRate) {
    givenClip(Support::CorrectionFileText().with("tcFps", "0").withFrame(100, "10.00.00.00"));
    std::strcpy(m_host.frameData->timecode, "10:00:00:00");
    frameSize();
    EXPECT_THAT(detailed(), HasSubstr("Frame Number: 0\n"));
}

TEST_F(CoreFileTest, LooksAFrameUpByTimecodePlusFrameNumber) {
    givenClip(Support::CorrectionFileText().with("tcFps", "25").withFrame(100, "10.00.01.00"));
    std::strcpy(m_host.frameData->timecode, "10:00:00:00");
    m_host.frameData->frameNumber = 24;
    frameSize();
    EXPECT_EQ(detailed(),
              "Metadata for the frame is not available. Timecode subtraction could not be performed.\n"
              "Clip File Path: \"" +
                  *m_host.clipFilePath + "\"\nTimecode: \"10:00:00:24\"\n");
}

TEST_F(CoreFileTest, RejectsATimecodeThatIsNone) {
    givenClip(Support::CorrectionFileText().with("tcFps", "25").withFrame(0, "10.00.00.00"));
    std::memcpy(m_host.frameData->timecode, "10:00:00:00:00:00", 16); // also lacks the terminating zero
    EXPECT_EQ(failureOfFrameSize(),
              "Timecode object could not be constructed due to invalid format.\n"
              "Timecode String: \"10:00:00:00:00:0\"\nFrames per Second: \"25\"\n");
}

TEST_F(CoreFileTest, ConvertsTheFrameNumberToTheFilesRateAndDropsTheFraction) {
    givenClip(Support::CorrectionFileText().with("tcFps", "25").withFrame(1000, "10.00.00.00"));
    m_host.frameData->frameNumber = 99;
    m_host.frameData->frameRate = 50.0f;
    frameSize();
    EXPECT_THAT(detailed(), HasSubstr("Frame Number: 49\n"));
}

TEST_F(CoreFileTest, ConvertsTheFrameNumberInSinglePrecisionByTheRatioOfTheRates) {
    givenClip(Support::CorrectionFileText().with("tcFps", "25").withFrame(1000, "10.00.00.00"));
    m_host.frameData->frameNumber = 120;
    m_host.frameData->frameRate = 24.0f;
    frameSize();
    EXPECT_THAT(detailed(), HasSubstr("Frame Number: 124\n")) << "1.04166663 × 120, where 25 × 120 ÷ 24 is 125";
}

TEST_F(CoreFileTest, AddsTheConvertedFrameNumberToTheTimecode) {
    givenClip(Support::CorrectionFileText().with("tcFps", "25").withFrame(1000, "11.00.00.00"));
    std::strcpy(m_host.frameData->timecode, "10:00:00:00");
    m_host.frameData->frameNumber = 48;
    m_host.frameData->frameRate = 50.0f;
    frameSize();
    EXPECT_THAT(detailed(), HasSubstr("Timecode: \"10:00:00:24\"\n"));
}

TEST_F(CoreFileTest, ConvertsEveryFrameNumberToZeroWhenTheFileHasNoRate) {
    givenClip(Support::CorrectionFileText().with("tcFps", "0").withFrame(1000, "10.00.00.00"));
    m_host.frameData->frameNumber = 99;
    m_host.frameData->frameRate = 25.0f;
    frameSize();
    EXPECT_THAT(detailed(), HasSubstr("Frame Number: 0\n"));
}

TEST_F(CoreFileTest, KeepsTheFrameNumberAtTheFilesOwnRate) {
    givenClip(Support::CorrectionFileText().with("tcFps", "25").withFrame(2147483647, "10.00.00.00"));
    m_host.frameData->frameNumber = 16777217; // no float
    m_host.frameData->frameRate = 25.0f;
    frameSize();
    EXPECT_THAT(detailed(), HasSubstr("Frame Number: 16777217\n"));
}

TEST_F(CoreFileTest, ReportsAMissingRecordBeforeAWrongAspectRatio) {
    givenClip(Support::CorrectionFileText());
    m_host.frameData = frameOf(4096, 4096);
    frameSize();
    EXPECT_EQ(brief(), "Metadata for the frame is not available.");
}

TEST_F(CoreFileTest, RejectsFrameNumbersThatNoRateConverts) {
    givenClip(Support::CorrectionFileText().with("tcFps", "25").withFrame(1000, "10.00.00.00"));
    m_host.frameData->frameNumber = 10;
    m_host.frameData->frameRate = notANumber;
    EXPECT_EQ(failureOfFrameSize(), conversionFailure("nan", "25"));
    m_host.frameData->frameRate = -50.0f;
    EXPECT_EQ(failureOfFrameSize(), conversionFailure("-50", "25"));
    m_host.frameData->frameRate = 1e-40f;
    EXPECT_EQ(failureOfFrameSize(), conversionFailure("9.99995e-41", "25"));
}

struct OddRate {
    const char* rate;
    const char* expected;
};

class CoreOddRateTest : public CoreFileTest, public testing::WithParamInterface<OddRate> {};

TEST_P(CoreOddRateTest, OfTheFileIsReportedWhenFrameNumbersAreConverted) {
    givenClip(Support::CorrectionFileText().with("tcFps", GetParam().rate).withFrame(0, "10.00.00.00"));
    m_host.frameData->frameNumber = 10;
    m_host.frameData->frameRate = 25.0f;
    EXPECT_EQ(failureOfFrameSize(), conversionFailure("25", GetParam().expected));
}

TEST_P(CoreOddRateTest, OfTheFileIsReportedWhenFramesAreLookedUpByTimecode) {
    givenClip(Support::CorrectionFileText().with("tcFps", GetParam().rate).withFrame(0, "10.00.00.00"));
    std::strcpy(m_host.frameData->timecode, "10:00:00:00");
    frameSize();
    EXPECT_EQ(brief(), "Timecode object could not be constructed due to invalid format.");
}

INSTANTIATE_TEST_SUITE_P(Each, CoreOddRateTest,
                         testing::Values(OddRate{"nan", "nan"}, OddRate{"inf", "inf"}, OddRate{"-25", "-25"},
                                         OddRate{"1e38", "1e+38"}));

TEST_F(CoreFacadeTest, ForgetsTheLastErrorWhenTheNextOperationSucceeds) {
    m_host.shading.emplace();
    ASSERT_FALSE(frameSize());
    m_host.shading.reset();
    ASSERT_TRUE(frameSize());
    EXPECT_EQ(brief(), "no error");
    EXPECT_EQ(detailed(), "no error");
}

TEST_F(CoreFacadeTest, ForgetsAFailureOfADataSourceThatCalledItBack) {
    class FailingSource : public Support::FakeCoreDataSource {
    public:
        using FakeCoreDataSource::FakeCoreDataSource;
        Core::Core* core = nullptr;

        bool shouldPerformShadingCorrection(Core::ShadingCorrectionParameter&) const override {
            RecordingFormatDatabase::RecordingFormat implied;
            EXPECT_FALSE(core->recordingFormat(implied));
            return false;
        }
    };
    auto ownedSource = std::make_unique<FailingSource>(m_host);
    FailingSource& source = *ownedSource;
    Core::Core core(std::move(ownedSource));
    source.core = &core;
    EXPECT_TRUE(core.render(nullptr, nullptr, 0));
    EXPECT_EQ(Support::briefErrorOf(core), "no error");
}

namespace {

// A sanitizer sees two threads meet, and need not catch the moment at which that does harm.
#ifdef ORVEX_SANITIZED
constexpr int rendersOfAThread = 5000;
#else
constexpr int rendersOfAThread = 100000;
#endif

/// Answers each thread with that thread's own frame, which carries its record.
class SourceOfThreads : public Core::CoreDataSource {
public:
    static thread_local std::uint32_t width;
    static thread_local std::string record;

    bool shouldPerformShadingCorrection(Core::ShadingCorrectionParameter&) const override { return false; }
    bool shouldPerformDistortionCorrection(Core::DistortionCorrectionParameter&) const override { return true; }
    bool frameMetadata(char* metadata, unsigned long capacity) const override {
        if (record.size() + 1 > capacity) return false;
        std::memcpy(metadata, record.c_str(), record.size() + 1);
        return true;
    }
    bool correctionFilePath(char*, unsigned long) const override { return false; }
    bool clipFileName(char*, unsigned long) const override { return false; }
    bool clipFilePath(char*, unsigned long) const override { return false; }
    bool frameData(Core::FrameData& frameData) const override {
        frameData = frameOf(width, width);
        return true;
    }
    bool recordingFormat(RecordingFormatDatabase::RecordingFormat&) const override { return false; }
};

thread_local std::uint32_t SourceOfThreads::width = 0;
thread_local std::string SourceOfThreads::record = Support::jsonRecord;

} // namespace

TEST(CoreThreads, KeepTheirFailuresTextsWhileOthersFailAndAPanelIsUpdated) {
    Core::Core core(std::make_unique<SourceOfThreads>());
    std::atomic<int> wrong{0}, running{2};
    const auto render = [&](std::uint32_t width, const std::string& brief, const std::string& details) {
        SourceOfThreads::width = width;
        for (int i = 0; i < rendersOfAThread; ++i) {
            if (core.render(nullptr, nullptr, 0) || Support::briefErrorOf(core) != brief ||
                Support::detailedErrorOf(core) != brief + "\n" + details) {
                ++wrong;
            }
        }
        --running;
    };
    const std::string brief = "Aspect ratio of the current frame is not as expected. Recommended resolution is ";
    const std::string format = "Recording Format Resolution: 4096x2160 px\n";
    std::thread large(render, 4096, brief + "4096x2160 px.", "Current Frame Resolution: 4096x4096 px\n" + format);
    std::thread small(render, 2048, brief + "2048x1080 px.", "Current Frame Resolution: 2048x2048 px\n" + format);
    for (int updates = 0; running > 0; ++updates) {
        const bool isToFail = updates % 100 == 99;
        SourceOfThreads::record = isToFail ? "{]" : Support::jsonRecord;
        RecordingFormatDatabase::RecordingFormat implied;
        const std::string expected = isToFail ? "Metadata for the frame is not available." : "no error";
        if (core.recordingFormat(implied) == isToFail || Support::briefErrorOf(core) != expected) ++wrong;
    }
    large.join();
    small.join();
    EXPECT_EQ(wrong, 0);
}

TEST_F(CoreFacadeTest, HasNoErrorBeforeTheFirstOperation) {
    EXPECT_EQ(brief(), "no error");
    EXPECT_EQ(detailed(), "no error");
}

TEST_F(CoreFacadeTest, GivesAnErrorTextOnlyToABufferThatAlsoHoldsItsZero) {
    m_host.shading.emplace();
    frameSize();
    const std::string expectedBrief = "There is some clip and correction file related data missing.";
    char text[100] = "untouched";
    EXPECT_FALSE(m_core.briefErrorDescription(text, expectedBrief.size()));
    EXPECT_STREQ(text, "untouched");
    EXPECT_TRUE(m_core.briefErrorDescription(text, expectedBrief.size() + 1));
    EXPECT_EQ(text, expectedBrief);
    EXPECT_FALSE(m_core.detailedErrorDescription(text, expectedBrief.size() + 1));
    EXPECT_TRUE(m_core.detailedErrorDescription(text, expectedBrief.size() + 2));
    EXPECT_EQ(text, expectedBrief + "\n");
}

TEST(CoreFacadeDeathTest, StopsOnAMissingErrorBuffer) {
    const Support::HostFrame host;
    const Core::Core core(std::make_unique<Support::FakeCoreDataSource>(host));
    char text[16];
    EXPECT_DEATH(core.briefErrorDescription(nullptr, 16), "Assertion failed: description\n");
    EXPECT_DEATH(core.briefErrorDescription(text, 0), "Assertion failed: capacity\n");
    EXPECT_DEATH(core.detailedErrorDescription(nullptr, 16), "Assertion failed: description\n");
    EXPECT_DEATH(core.detailedErrorDescription(text, 0), "Assertion failed: capacity\n");
}

TEST(CoreMetadataKeys, GiveTheKeyOfAClipName) {
    char key[128];
    ASSERT_TRUE(Core::Core::metadataKeyForClipFileName("red", "r3d", key, sizeof(key)));
    EXPECT_STREQ(key, "r3d/reel_id_full");
}

TEST(CoreMetadataKeys, NeedRoomForTheKeyAndItsZero) {
    char key[15] = "untouched";
    EXPECT_FALSE(Core::Core::metadataKeyForTimecode("ARRI", "MXF", key, 14));
    EXPECT_STREQ(key, "untouched");
    EXPECT_TRUE(Core::Core::metadataKeyForTimecode("ARRI", "MXF", key, 15));
    EXPECT_STREQ(key, "input/timecode");
}

TEST(CoreMetadataKeys, AreMissingForAnUnknownMakerOrContainer) {
    char key[128] = "untouched";
    EXPECT_FALSE(Core::Core::metadataKeyForClipFileName("RED", "EXR", key, sizeof(key)));
    EXPECT_FALSE(Core::Core::metadataKeyForTimecode("Nobody", "EXR", key, sizeof(key)));
    EXPECT_STREQ(key, "untouched");
}

TEST(CoreMetadataKeysDeathTest, StopOnMissingArguments) {
    char key[16];
    EXPECT_DEATH(Core::Core::metadataKeyForTimecode(nullptr, "EXR", key, 16), "Assertion failed: c_cameraManufacturer");
    EXPECT_DEATH(Core::Core::metadataKeyForTimecode("RED", nullptr, key, 16), "Assertion failed: c_containerFormat");
    EXPECT_DEATH(Core::Core::metadataKeyForTimecode("RED", "EXR", nullptr, 16), "Assertion failed: c_key");
    EXPECT_DEATH(Core::Core::metadataKeyForTimecode("RED", "EXR", key, 0), "Assertion failed: keyCapacity");
}
