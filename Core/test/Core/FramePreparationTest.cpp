#include "Core/FramePreparation.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <boost/algorithm/string/replace.hpp>
#include <cstring>
#include <stdexcept>
#include <string>

#include "Core/FakeCoreDataSource.h"
#include "Exception/Exception.h"
#include "Support/CorrectionFileText.h"
#include "Support/JsonRecord.h"
#include "Support/TemporaryFolder.h"

using Core::FrameToCorrect;
using Core::RecordingFormatOrigin;
using Core::RecordKey;
using Support::CorrectionFileText;

namespace {

class FramePreparationTest : public testing::Test {
protected:
    const Support::TemporaryFolder m_folder;
    Support::HostFrame m_host;
    Core::FramePreparation m_preparation{std::make_unique<Support::FakeCoreDataSource>(m_host)};

    void givenCorrectionFile(CorrectionFileText text) {
        text.with("tcFps", "25").withFrame(10, "01.00.00.00").withFrame(11, "01.00.00.01");
        m_host.distortion.emplace();
        m_host.frameData = Support::frameOf(4096, 2160, 11);
        m_host.clipFileName = "A001C002.mov";
        m_host.correctionFilePath = m_folder.write("a.olcf", text.string());
    }

    void givenTimecode(const char* timecode, std::uint32_t frameNumber) {
        m_host.frameData = Support::frameOf(4096, 2160, frameNumber);
        std::strcpy(m_host.frameData->timecode, timecode);
    }

    /// A frame of 1920 × 1080 px that carries its record.
    void givenRecord() {
        m_host.distortion.emplace();
        m_host.frameData = Support::frameOf(1920, 1080);
        m_host.frameMetadata = Support::jsonRecord;
        m_host.recordingFormat = {24.0f, 13.5f, 1920, 1080, 13.77f};
    }

    FrameToCorrect frame() { return m_preparation.retrieveFrameToCorrect().value(); }
};

} // namespace

TEST_F(FramePreparationTest, IsNothingWithoutAWantedCorrection) {
    EXPECT_FALSE(m_preparation.retrieveFrameToCorrect().has_value());
}

TEST_F(FramePreparationTest, TellsThatARecordWasFoundByItsNumber) {
    givenCorrectionFile(CorrectionFileText());
    EXPECT_EQ(RecordKey::FrameNumber, frame().key);
    EXPECT_EQ("11", frame().keyText);
}

TEST_F(FramePreparationTest, TellsTheTimecodeThatARecordWasFoundBy) {
    givenCorrectionFile(CorrectionFileText());
    givenTimecode("01:00:00:00", 1);
    EXPECT_EQ(RecordKey::Timecode, frame().key);
    EXPECT_EQ("01:00:00:01", frame().keyText);
    EXPECT_EQ(11, frame().record.frameNumber);
}

TEST_F(FramePreparationTest, TellsThatTheFrameCarriesItsRecord) {
    givenRecord();
    EXPECT_EQ(RecordKey::OwnRecord, frame().key);
}

TEST_F(FramePreparationTest, TellsWhatTheCorrectionDataWereChosenBy) {
    givenRecord();
    EXPECT_EQ(Core::ContainerSource(Core::FrameMetadata{Support::jsonRecord}), frame().source);
    m_host.frameMetadata.reset();
    givenCorrectionFile(CorrectionFileText());
    m_host.recordingFormat.reset();
    EXPECT_EQ(Core::ContainerSource(Core::SelectedCorrectionFile{"A001C002.mov", *m_host.correctionFilePath}),
              frame().source);
}

TEST_F(FramePreparationTest, AsksEachQuestionOnce) {
    givenRecord();
    frame();
    EXPECT_THAT(m_host.questions,
                testing::ElementsAre("shading", "distortion", "correctionFilePath 4096", "clipFileName 4096",
                                     "frameMetadata 4096", "clipFilePath 4096", "recordingFormat", "frameData"));
}

TEST_F(FramePreparationTest, TakesRecordingFormatAndRecordFromOneAnswerWhenTheHostChangesItMeanwhile) {
    class ChangingSource : public Support::FakeCoreDataSource {
    public:
        explicit ChangingSource(Support::HostFrame& host) : FakeCoreDataSource(host), m_host(host) {}
        bool recordingFormat(RecordingFormatDatabase::RecordingFormat&) const override {
            m_host.frameMetadata = boost::replace_first_copy(Support::jsonRecord, "99.5", "50");
            return false;
        }

    private:
        Support::HostFrame& m_host;
    };
    givenRecord();
    m_host.frameData = Support::frameOf(4096, 2160);
    Core::FramePreparation preparation(std::make_unique<ChangingSource>(m_host));
    EXPECT_EQ(99.5f, preparation.retrieveFrameToCorrect().value().record.shading.at(1));
    EXPECT_EQ(50.0f, preparation.retrieveFrameToCorrect().value().record.shading.at(1)) << "the next frame's";
}

TEST_F(FramePreparationTest, TellsAMissingFormatBeforeAQuestionForTheFrameThatThrows) {
    class ThrowingSource : public Support::FakeCoreDataSource {
    public:
        using FakeCoreDataSource::FakeCoreDataSource;
        bool frameData(Core::FrameData&) const override { throw std::domain_error("no size"); }
    };
    givenRecord();
    Core::FramePreparation preparation(std::make_unique<ThrowingSource>(m_host));
    EXPECT_THROW(preparation.retrieveFrameToCorrect(), std::domain_error);
    m_host.recordingFormat->imageRadius = 0.0f;
    EXPECT_THROW(preparation.retrieveFrameToCorrect(), Exception);
}

TEST_F(FramePreparationTest, TellsThatTheRecordingFormatIsTheUsers) {
    givenCorrectionFile(CorrectionFileText());
    m_host.recordingFormat = {24.0f, 12.66f, 4096, 2160, 13.6f};
    EXPECT_EQ(RecordingFormatOrigin::Kind::User, frame().recordingFormatOrigin.kind);
}

TEST_F(FramePreparationTest, TellsThatTheRecordingFormatIsTheHeaders) {
    givenCorrectionFile(CorrectionFileText());
    EXPECT_EQ(RecordingFormatOrigin::Kind::Header, frame().recordingFormatOrigin.kind);
}

TEST_F(FramePreparationTest, NamesTheRecordingFormatOfTheTable) {
    givenCorrectionFile(CorrectionFileText()
                            .with("sensorWidth", "0")
                            .with("cameraManufacturer", "ARRI")
                            .with("cameraModel", "ALEXA Mini")
                            .with("clipWidth", "2880")
                            .with("clipHeight", "1620"));
    m_host.frameData = Support::frameOf(2880, 1620, 11);
    EXPECT_EQ(RecordingFormatOrigin::Kind::Database, frame().recordingFormatOrigin.kind);
    EXPECT_EQ("RAW 16:9 2.8K", frame().recordingFormatOrigin.name);
}

TEST_F(FramePreparationTest, NeedsNoDeviceForTheParameters) {
    givenCorrectionFile(CorrectionFileText());
    const Core::FrameParameters parameters = m_preparation.parameters(frame());
    EXPECT_FALSE(parameters.shading.has_value());
    ASSERT_TRUE(parameters.distortion.has_value());
    EXPECT_EQ(frame().recordingFormat.imageRadius, parameters.distortion->frameImageRadius);
}
