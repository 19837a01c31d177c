#include "CorrectionData/Container/ManagedContainer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <boost/lexical_cast/bad_lexical_cast.hpp>
#include <functional>
#include <thread>
#include <vector>

#include "CorrectionData/Container/DataNotAvailableException.h"
#include "Exception/Exception.h"
#include "Support/JsonRecord.h"
#include "Timecode/Timecode.h"

using CorrectionData::Content;
using CorrectionData::DataNotAvailableException;
using CorrectionData::Frame;
using CorrectionData::Header;
using CorrectionData::ManagedContainer;
using CorrectionData::ManagedContainerDataSource;

namespace {

/// Hands out one content, or fails; keeps the content alive until told to forget it.
class FakeDataSource : public ManagedContainerDataSource {
public:
    std::shared_ptr<Content> content = std::make_shared<Content>();
    std::vector<std::string> questions;
    std::string failure;
    bool failsWithBadCast = false;

    void shareContent(const std::string& clipFilePath, std::shared_ptr<Content>& shared) override {
        answer("path " + clipFilePath, shared);
    }
    void shareContent(const std::string& clipFileName, const std::string& correctionFilePath,
                      std::shared_ptr<Content>& shared) override {
        answer("name " + clipFileName + " file " + correctionFilePath, shared);
    }

private:
    void answer(const std::string& question, std::shared_ptr<Content>& shared) {
        questions.push_back(question);
        if (failsWithBadCast) throw boost::bad_lexical_cast();
        if (!failure.empty()) throw Exception(failure, "Details: of below");
        shared = content;
    }
};

class ManagedContainerTest : public testing::Test {
protected:
    const std::shared_ptr<FakeDataSource> m_source = std::make_shared<FakeDataSource>();
    ManagedContainer m_clip{"/clips/A001.mov", m_source};
    ManagedContainer m_named{"A001.mov", "/files/A001.olcf", m_source};

    void givenFrame(unsigned int number, const std::string& timecode = "01:00:00:00") {
        Frame frame;
        frame.frameNumber = static_cast<std::int32_t>(number);
        frame.timecode = timecode;
        m_source->content->frames[number] = frame;
    }

    void givenFrames10And20And30() {
        for (const unsigned int number : {10u, 20u, 30u}) givenFrame(number);
    }

    void givenFrames100To200At25FramesPerSecond() {
        m_source->content->header.tcFps = 25.0f;
        for (unsigned int number = 100; number <= 200; ++number) givenFrame(number);
    }

    static int frameNumberAt(CorrectionData::Container& container, unsigned int number) {
        Frame frame;
        container.frameData(number, frame);
        return frame.frameNumber;
    }

    static int frameNumberAt(CorrectionData::Container& container, const char* timecode, float rate = 25.0f) {
        Frame frame;
        container.frameData(Timecode::Timecode(timecode, rate), frame);
        return frame.frameNumber;
    }

    template <typename Operation>
    static std::string failureOf(Operation operation) {
        try {
            operation();
        } catch (const DataNotAvailableException& exception) {
            return exception.detailedDescription();
        }
        return "no failure";
    }
};

} // namespace

TEST_F(ManagedContainerTest, AsksTheDataSourceByTheClipsPath) {
    Header header;
    m_clip.headerData(header);
    EXPECT_THAT(m_source->questions, testing::ElementsAre("path /clips/A001.mov"));
}

TEST_F(ManagedContainerTest, AsksTheDataSourceByTheClipsNameAndItsCorrectionFile) {
    Header header;
    m_named.headerData(header);
    EXPECT_THAT(m_source->questions, testing::ElementsAre("name A001.mov file /files/A001.olcf"));
}

TEST_F(ManagedContainerTest, CopiesTheHeaderOfTheContent) {
    m_source->content->header.clipName = "A001";
    Header header;
    m_clip.headerData(header);
    EXPECT_EQ(header.clipName, "A001");
}

TEST_F(ManagedContainerTest, SharesTheContentItself) {
    std::shared_ptr<Content> content;
    m_clip.sharedContent(content);
    EXPECT_EQ(content, m_source->content);
}

TEST_F(ManagedContainerTest, LeavesTheSharedContentUntouchedWhenItsDataSourceFails) {
    const auto kept = std::make_shared<Content>();
    std::shared_ptr<Content> content = kept;
    m_source->failure = "Correction file could not be found.";
    EXPECT_THROW(m_clip.sharedContent(content), Exception);
    EXPECT_EQ(content, kept);
}

TEST_F(ManagedContainerTest, ThrowsWhatItsClipLacks) {
    try {
        m_named.throwException("Because.", 7u);
    } catch (const DataNotAvailableException& exception) {
        EXPECT_EQ(exception.detailedDescription(),
                  "Metadata for the frame is not available. Because.\nClip File Name: \"A001.mov\"\n"
                  "Correction File Path: \"/files/A001.olcf\"\nFrame Number: 7\n");
    }
}

TEST_F(ManagedContainerTest, AsksTheDataSourceOnceWhileTheContentLives) {
    givenFrames10And20And30();
    Header header;
    m_clip.headerData(header);
    frameNumberAt(m_clip, 10);
    EXPECT_EQ(m_source->questions.size(), 1u);
}

TEST_F(ManagedContainerTest, AsksAgainOnceTheContentWasDropped) {
    Header header;
    m_clip.headerData(header);
    m_source->content = std::make_shared<Content>();
    m_source->content->header.clipName = "fetched again";
    m_clip.headerData(header);
    EXPECT_EQ(header.clipName, "fetched again");
}

TEST_F(ManagedContainerTest, GivesTheFrameOfARequestedNumber) {
    givenFrames10And20And30();
    EXPECT_EQ(frameNumberAt(m_clip, 20), 20);
}

TEST_F(ManagedContainerTest, GivesTheEarlierFrameBetweenTwoStoredOnes) {
    givenFrames10And20And30();
    EXPECT_EQ(frameNumberAt(m_clip, 25), 20);
}

TEST_F(ManagedContainerTest, GivesTheLastFrameBeyondIt) {
    givenFrames10And20And30();
    EXPECT_EQ(frameNumberAt(m_clip, 35), 30);
    EXPECT_EQ(frameNumberAt(m_clip, 4294967295u), 30);
}

TEST_F(ManagedContainerTest, HasNoFrameBeforeTheFirstOneAndGivesNoReason) {
    givenFrames10And20And30();
    EXPECT_EQ(failureOf([this] { frameNumberAt(m_clip, 9); }),
              "Metadata for the frame is not available.\nClip File Path: \"/clips/A001.mov\"\nFrame Number: 9\n");
}

TEST_F(ManagedContainerTest, HasNoFrameInContentWithoutFrames) {
    EXPECT_EQ(failureOf([this] { frameNumberAt(m_named, 0u); }),
              "Metadata for the frame is not available.\nClip File Name: \"A001.mov\"\n"
              "Correction File Path: \"/files/A001.olcf\"\nFrame Number: 0\n");
}

TEST_F(ManagedContainerTest, FindsAFrameByItsDistanceFromTheFirstFramesTimecode) {
    givenFrames100To200At25FramesPerSecond();
    EXPECT_EQ(frameNumberAt(m_clip, "01:00:01:00"), 125);
}

TEST_F(ManagedContainerTest, GivesTheLastFrameForATimecodeBeyondIt) {
    givenFrames100To200At25FramesPerSecond();
    EXPECT_EQ(frameNumberAt(m_clip, "02:00:00:00"), 200);
}

TEST_F(ManagedContainerTest, DoesNotWrapATimecodeFarBeyondTheLastFrameToAnEarlierOne) {
    m_source->content->header.tcFps = 25.0f;
    givenFrame(2000000000u, "00:00:00:00");
    EXPECT_EQ(frameNumberAt(m_clip, "40000:00:00:00"), 2000000000) << "2 × 10⁹ + 3.6 × 10⁹ frames exceed 32 bits";
}

TEST_F(ManagedContainerTest, ReportsATimecodeBeforeTheFirstFrameAsAFrameThatIsNotAvailable) {
    givenFrames100To200At25FramesPerSecond();
    EXPECT_EQ(failureOf([this] { frameNumberAt(m_clip, "00:59:59:24"); }),
              "Metadata for the frame is not available. Timecode subtraction could not be performed.\n"
              "Clip File Path: \"/clips/A001.mov\"\nTimecode: \"00:59:59:24\"\n");
}

TEST_F(ManagedContainerTest, ReportsATimecodeForContentWithoutFrames) {
    EXPECT_EQ(failureOf([this] { frameNumberAt(m_named, "01:00:00:00"); }),
              "Metadata for the frame is not available.\nClip File Name: \"A001.mov\"\n"
              "Correction File Path: \"/files/A001.olcf\"\nTimecode: \"01:00:00:00\"\n");
}

TEST_F(ManagedContainerTest, PassesOnThatTheFirstFramesTimecodeIsNone) {
    m_source->content->header.tcFps = 25.0f;
    givenFrame(0, "01:00:00");
    EXPECT_THROW(frameNumberAt(m_clip, "01:00:00:00"), Timecode::InvalidTimecodeException);
}

TEST_F(ManagedContainerTest, LooksATimecodesFrameUpThroughTheNumberOperation) {
    struct Derived : ManagedContainer {
        using ManagedContainer::frameData;
        using ManagedContainer::ManagedContainer;
        void frameData(unsigned int frameNumber, Frame& frame) override {
            frame.frameNumber = static_cast<std::int32_t>(frameNumber) + 1000;
        }
    };
    givenFrames100To200At25FramesPerSecond();
    Derived derived("/clips/A001.mov", m_source);
    EXPECT_EQ(frameNumberAt(derived, "01:00:01:00"), 1125);
}

TEST_F(ManagedContainerTest, GivesTheReasonFromBelowWhenTheHeaderIsNotAvailable) {
    m_source->failure = "Correction file could not be found.";
    Header header;
    EXPECT_EQ(failureOf([&] { m_clip.headerData(header); }),
              "Header of the metadata is not available. Correction file could not be found.\n"
              "Clip File Path: \"/clips/A001.mov\"\n");
    EXPECT_EQ(failureOf([&] { m_named.headerData(header); }),
              "Header of the metadata is not available. Correction file could not be found.\n"
              "Clip File Name: \"A001.mov\"\nCorrection File Path: \"/files/A001.olcf\"\n");
}

TEST_F(ManagedContainerTest, GivesTheReasonFromBelowWhenAFrameIsNotAvailable) {
    m_source->failure = "Correction file could not be read.";
    EXPECT_EQ(failureOf([this] { frameNumberAt(m_clip, 7); }),
              "Metadata for the frame is not available. Correction file could not be read.\n"
              "Clip File Path: \"/clips/A001.mov\"\nFrame Number: 7\n");
    EXPECT_EQ(failureOf([this] { frameNumberAt(m_clip, "01:00:00:07"); }),
              "Metadata for the frame is not available. Correction file could not be read.\n"
              "Clip File Path: \"/clips/A001.mov\"\nTimecode: \"01:00:00:07\"\n");
}

TEST_F(ManagedContainerTest, PassesOnFailuresOfOtherKinds) {
    m_source->failsWithBadCast = true;
    Header header;
    EXPECT_THROW(m_clip.headerData(header), boost::bad_lexical_cast);
    EXPECT_THROW(frameNumberAt(m_clip, 7), boost::bad_lexical_cast);
    EXPECT_THROW(frameNumberAt(m_clip, "01:00:00:00"), boost::bad_lexical_cast);
}

TEST(ManagedJsonContainer, AnswersEveryNumberAndTimecodeWithItsFrame) {
    ManagedContainer container(Support::jsonRecord);
    Frame byNumber, byTimecode;
    container.frameData(123456u, byNumber);
    container.frameData(Timecode::Timecode("23:00:00:00", 0.0f), byTimecode);
    EXPECT_EQ(byNumber.shading.at(1), 99.5f);
    EXPECT_EQ(byTimecode.shading, byNumber.shading);
}

TEST(ManagedJsonContainer, GivesTheRecordsHeader) {
    ManagedContainer container(Support::jsonRecord);
    Header header;
    container.headerData(header);
    EXPECT_EQ(header.cameraModel, "ALEXA Mini");
}

TEST(ManagedJsonContainer, NamesATextThatDoesNotParseAtEveryCall) {
    ManagedContainer container("{]");
    Header header;
    Frame frame;
    const auto failures = {std::function<void()>([&] { container.headerData(header); }),
                           std::function<void()>([&] { container.frameData(0u, frame); }), std::function<void()>([&] {
                               container.frameData(Timecode::Timecode("01:00:00:00", 25.0f), frame);
                           })};
    for (const auto& operation : failures) {
        try {
            operation();
            ADD_FAILURE();
        } catch (const DataNotAvailableException& exception) {
            EXPECT_EQ(exception.detailedDescription(),
                      "Metadata for the frame is not available.\nJSON String: \"{]\"\n");
        }
    }
}

TEST(ManagedJsonContainer, ServesSeveralThreads) {
    ManagedContainer container(Support::jsonRecord);
    std::vector<Frame> frames(8);
    std::vector<std::thread> threads;
    for (Frame& frame : frames) threads.emplace_back([&container, &frame] { container.frameData(0u, frame); });
    for (std::thread& thread : threads) thread.join();
    for (const Frame& frame : frames) EXPECT_EQ(frame.heights.size(), 7u);
}

TEST(ManagedContainerDeathTest, StopsOnMissingArguments) {
    const auto source = std::make_shared<FakeDataSource>();
    EXPECT_DEATH(ManagedContainer("/clips/A001.mov", nullptr), "Assertion failed: dataSource\n");
    EXPECT_DEATH(ManagedContainer("", source), "clipFilePath.length\\(\\)");
    EXPECT_DEATH(ManagedContainer("A001.mov", "/files/A001.olcf", nullptr), "Assertion failed: dataSource\n");
    EXPECT_DEATH(ManagedContainer("", "/files/A001.olcf", source), "clipFileName.length\\(\\)");
    EXPECT_DEATH(ManagedContainer("A001.mov", "", source), "correctionFilePath.length\\(\\)");
    EXPECT_DEATH(ManagedContainer(""), "frameMetadataJSONString.length\\(\\)");
}

TEST(ManagedContainerDeathTest, StopsWhenContentIsAskedOfARecord) {
    ManagedContainer container(Support::jsonRecord);
    std::shared_ptr<Content> content;
    EXPECT_DEATH(container.sharedContent(content), "Assertion failed: m_dataSource\n");
}

TEST(ManagedContainerDeathTest, NamesTheFirstOfSeveralMissingArguments) {
    const auto source = std::make_shared<FakeDataSource>();
    EXPECT_DEATH(ManagedContainer("", nullptr), "Assertion failed: dataSource\n");
    EXPECT_DEATH(ManagedContainer("", "", nullptr), "Assertion failed: dataSource\n");
    EXPECT_DEATH(ManagedContainer("", "", source), "clipFileName.length\\(\\)");
}
