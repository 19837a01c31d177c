#include "Core/ExtendedManagedContainer.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <sstream>
#include <thread>
#include <vector>

#include "Exception/Exception.h"
#include "Support/JsonRecord.h"

using Core::ExtendedManagedContainer;
using CorrectionData::Content;
using CorrectionData::Header;
using RecordingFormatDatabase::RecordingFormat;

namespace {

class OneContent : public CorrectionData::ManagedContainerDataSource {
public:
    std::shared_ptr<Content> content = std::make_shared<Content>();
    bool fails = false;

    void shareContent(const std::string&, std::shared_ptr<Content>& shared) override {
        if (fails) throw Exception("Nothing there.");
        shared = content;
    }
    void shareContent(const std::string&, const std::string&, std::shared_ptr<Content>& shared) override {
        shared = content;
    }
};

Header headerOf(const char* maker, const char* model, float sensorWidth, std::uint32_t width, std::uint32_t height) {
    Header header;
    header.cameraManufacturer = maker;
    header.cameraModel = model;
    header.sensorWidth = sensorWidth;
    header.clipWidth = width;
    header.clipHeight = height;
    return header;
}

RecordingFormat formatOf(const Header& header) {
    const auto source = std::make_shared<OneContent>();
    source->content->header = header;
    return ExtendedManagedContainer("/clips/A001.mov", source).recordingFormat();
}

std::string text(const RecordingFormat& format) {
    std::ostringstream stream;
    stream << format.imageAreaWidth << " x " << format.imageAreaHeight << " mm, " << format.clipResolutionWidth << " x "
           << format.clipResolutionHeight << " px, radius " << format.imageRadius;
    return stream.str();
}

constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();
constexpr float infinity = std::numeric_limits<float>::infinity();

} // namespace

TEST(ExtendedManagedContainer, TakesACompleteHeaderWithoutTheDatabase) {
    const RecordingFormat format = formatOf(headerOf("Nobody", "Nothing", 24.0f, 4096, 2160));
    EXPECT_EQ(format.imageAreaHeight, 12.65625f);
    EXPECT_EQ(format.imageRadius, static_cast<float>(std::sqrt(12.0 * 12.0 + 6.328125 * 6.328125)));
    EXPECT_EQ(text(format), "24 x 12.6562 mm, 4096 x 2160 px, radius 13.5663");
}

TEST(ExtendedManagedContainer, WorksOutTheAreasHeightInSingleAndItsRadiusInDoublePrecision) {
    const RecordingFormat format = formatOf(headerOf("", "", 20.03f, 4448, 3096));
    EXPECT_EQ(format.imageAreaHeight, 13.9417458f) << "13.9417448 in double precision";
    EXPECT_EQ(format.imageRadius, 12.2021847f) << "12.2021837 in single precision";
}

TEST(ExtendedManagedContainer, PrefersACompleteHeaderOverTheDatabase) {
    EXPECT_EQ(text(formatOf(headerOf("ARRI", "ALEXA Mini", 20.0f, 2880, 1620))),
              "20 x 11.25 mm, 2880 x 1620 px, radius 11.4735");
}

TEST(ExtendedManagedContainer, FindsTheCamerasOnlyFormatOfTheClipsSize) {
    EXPECT_EQ(text(formatOf(headerOf("ARRI", "ALEXA Mini", 0.0f, 2880, 1620))),
              "23.76 x 13.37 mm, 2880 x 1620 px, radius 13.6317");
}

TEST(ExtendedManagedContainer, FindsTheCameraWhateverTheCase) {
    EXPECT_EQ(formatOf(headerOf("arri", "alexa mini", 0.0f, 2880, 1620)).imageAreaWidth, 23.76f);
}

TEST(ExtendedManagedContainer, FindsTheCamerasOnlyFormatOfTheSensorsWidth) {
    EXPECT_EQ(text(formatOf(headerOf("ARRI", "ALEXA Mini", 28.25f, 0, 0))),
              "28.25 x 18.17 mm, 3424 x 2202 px, radius 16.7944");
}

TEST(ExtendedManagedContainer, ComparesTheSensorsWidthExactly) {
    EXPECT_EQ(formatOf(headerOf("ARRI", "ALEXA Mini", std::nextafter(28.25f, 0.0f), 0, 0)).imageRadius, 0.0f);
    EXPECT_EQ(formatOf(headerOf("ARRI", "ALEXA Mini", std::nextafter(28.25f, 99.0f), 0, 0)).imageRadius, 0.0f);
}

TEST(ExtendedManagedContainer, DoesNotChooseBetweenTwoFormatsOfTheClipsSize) {
    EXPECT_EQ(text(formatOf(headerOf("ARRI", "ALEXA Mini", 0.0f, 2880, 2160))), "0 x 0 mm, 2880 x 2160 px, radius 0");
}

TEST(ExtendedManagedContainer, DoesNotChooseBetweenFourFormatsOfTheSensorsWidth) {
    EXPECT_EQ(text(formatOf(headerOf("ARRI", "ALEXA Mini", 23.76f, 0, 0))), "23.76 x 0 mm, 0 x 0 px, radius 0");
}

TEST(ExtendedManagedContainer, GivesWhatTheHeaderSaysWhenTheModelIsMissing) {
    EXPECT_EQ(text(formatOf(headerOf("ARRI", "", 23.76f, 0, 1620))), "23.76 x 0 mm, 0 x 1620 px, radius 0");
}

TEST(ExtendedManagedContainer, GivesWhatTheHeaderSaysWhenTheMakerIsUnknown) {
    EXPECT_EQ(text(formatOf(headerOf("Nobody", "ALEXA Mini", 0.0f, 2880, 1620))), "0 x 0 mm, 2880 x 1620 px, radius 0");
}

TEST(ExtendedManagedContainer, GivesWhatTheHeaderSaysWhenTheModelIsUnknown) {
    EXPECT_EQ(text(formatOf(headerOf("ARRI", "Nothing", 0.0f, 2880, 1620))), "0 x 0 mm, 2880 x 1620 px, radius 0");
}

TEST(ExtendedManagedContainer, SurvivesEveryOddHeader) {
    for (const float width : {0.0f, -1.0f, 23.76f, -23.76f, notANumber, infinity, -infinity, 1e-6f, 1e28f}) {
        for (const std::uint32_t clipWidth : {0u, 1u, 2880u, 4294967295u}) {
            for (const std::uint32_t clipHeight : {0u, 1u, 1620u, 4294967295u}) {
                const RecordingFormat format = formatOf(headerOf("ARRI", "ALEXA Mini", width, clipWidth, clipHeight));
                const bool isComplete = width > 0.0f && clipWidth > 0 && clipHeight > 0;
                const bool isOnlyFormat = clipWidth == 2880 && clipHeight == 1620;
                EXPECT_EQ(format.imageRadius > 0.0f, isComplete || isOnlyFormat)
                    << width << ' ' << clipWidth << ' ' << clipHeight;
            }
        }
    }
}

TEST(ExtendedManagedContainer, KeepsItsFormatWhenTheContentChangesLater) {
    const auto source = std::make_shared<OneContent>();
    source->content->header = headerOf("", "", 24.0f, 4096, 2160);
    ExtendedManagedContainer container("A001.mov", "/files/A001.olcf", source);
    container.recordingFormat();
    source->content->header.clipWidth = 2048;
    EXPECT_EQ(container.recordingFormat().clipResolutionWidth, 4096u);
}

TEST(ExtendedManagedContainer, TriesAgainAfterTheHeaderWasNotAvailable) {
    const auto source = std::make_shared<OneContent>();
    source->content->header = headerOf("", "", 24.0f, 4096, 2160);
    source->fails = true;
    ExtendedManagedContainer container("/clips/A001.mov", source);
    EXPECT_THROW(container.recordingFormat(), Exception);
    source->fails = false;
    EXPECT_EQ(container.recordingFormat().clipResolutionWidth, 4096u);
}

TEST(ExtendedManagedContainer, GivesTheFormatOfAJsonRecord) {
    const RecordingFormat format = ExtendedManagedContainer(Support::jsonRecord).recordingFormat();
    EXPECT_EQ(format.clipResolutionHeight, 2160u);
    EXPECT_NEAR(format.imageRadius, 15.0f, 1e-5f) << "there and back again in single precision";
}

TEST(ExtendedManagedContainer, GivesSeveralThreadsTheSameFormat) {
    ExtendedManagedContainer container(Support::jsonRecord);
    std::vector<RecordingFormat> formats(8);
    std::vector<std::thread> threads;
    for (RecordingFormat& format : formats) {
        threads.emplace_back([&container, &format] { format = container.recordingFormat(); });
    }
    for (std::thread& thread : threads) thread.join();
    for (const RecordingFormat& format : formats) EXPECT_EQ(text(format), text(formats[0]));
}
