#include "Core/FramePreparation.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "Core/FakeCoreDataSource.h"
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
    m_host.distortion.emplace();
    m_host.frameData = Support::frameOf(1920, 1080);
    m_host.frameMetadata = Support::jsonRecord;
    m_host.recordingFormat = {24.0f, 13.5f, 1920, 1080, 13.77f};
    EXPECT_EQ(RecordKey::OwnRecord, frame().key);
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
