#include "HostMetadata.h"

#include <gtest/gtest.h>

#include "FrameReader.h"
#include "Support/RawExr.h"
#include "Support/TemporaryFolder.h"

namespace {

using namespace Image;

class HostMetadata : public testing::Test {
protected:
    /// Every key as text, of an EXR with these attributes more.
    std::map<std::string, std::string> keysOf(const std::string& attributes) {
        RawExr raw;
        raw.more = attributes;
        raw.displayWindow = {0, 0, 63, 35};
        raw.write(path);
        std::map<std::string, std::string> texts;
        for (const auto& [key, value] : hostMetadata(openReader(path)->readHeader(), path, 1001))
            texts[key] = metadataText(value);
        return texts;
    }

    Support::TemporaryFolder folder;
    const std::string path = folder.path("a.1001.exr");
};

TEST_F(HostMetadata, TellsWhatTheFileIs) {
    std::map<std::string, std::string> keys = keysOf("");
    EXPECT_EQ(keys["input/filename"], path);
    EXPECT_EQ(keys["input/filereader"], "exr");
    EXPECT_EQ(keys["input/frame"], "1001");
    EXPECT_EQ(keys["input/width"], "64");
    EXPECT_EQ(keys["input/height"], "36");
    EXPECT_EQ(keys["input/bitsperchannel"], "16-bit half float");
    EXPECT_EQ(keys["input/filesize"], std::to_string(std::filesystem::file_size(path)));
    EXPECT_EQ(keys["exr/displayWindow"], "0 0 63 35");
    EXPECT_EQ(keys["exr/pixelAspectRatio"], "1");
    EXPECT_EQ(keys.count("input/timecode"), 0u);
    EXPECT_EQ(keys.count("input/frame_rate"), 0u);
}

TEST_F(HostMetadata, ShowsTextAttributesUnderTheirOwnName) {
    EXPECT_EQ(keysOf(RawExr::attribute("com.orvex.LensCorrection", "string", "{}"))["exr/com.orvex.LensCorrection"],
              "{}");
}

TEST_F(HostMetadata, KeepsTextAfterANul) {
    const std::string text("{\"a\":1}\0{}", 10);
    EXPECT_EQ(keysOf(RawExr::attribute("record", "string", text))["exr/record"], text);
}

TEST_F(HostMetadata, ShowsNumbersAndListsAsNumbers) {
    std::map<std::string, std::string> keys =
        keysOf(RawExr::attribute("count", "int", RawExr::words({-7})) +
               RawExr::attribute("centre", "v2f", RawExr::words({0x3f000000, 0x40000000})));
    EXPECT_EQ(keys["exr/count"], "-7");
    EXPECT_EQ(keys["exr/centre"], "0.5 2");
}

TEST_F(HostMetadata, LeavesOutWhatHasNoTextForm) {
    EXPECT_EQ(keysOf(RawExr::attribute("thing", "makersType", "abc")).count("exr/thing"), 0u);
}

TEST_F(HostMetadata, DecodesTheTimecodeWord) {
    EXPECT_EQ(keysOf(RawExr::attribute("timeCode", "timecode", RawExr::words({0x10000147, 0})))["input/timecode"],
              "10:00:01:07")
        << "bit 6 is the drop-frame flag and no digit";
}

TEST_F(HostMetadata, DecodesADropFrameTimecodeWithoutItsFlag) {
    EXPECT_EQ(keysOf(RawExr::attribute("timeCode", "timecode", RawExr::words({0x10000152, 0})))["input/timecode"],
              "10:00:01:12");
}

TEST_F(HostMetadata, FallsBackToTheTextThatHostsWrite) {
    EXPECT_EQ(keysOf(RawExr::attribute("input/timecode", "string", "01:02:03;04"))["input/timecode"], "01:02:03:04");
}

TEST_F(HostMetadata, PrefersTheTypedTimecodeToTheText) {
    EXPECT_EQ(keysOf(RawExr::attribute("input/timecode", "string", "01:02:03:04") +
                     RawExr::attribute("timeCode", "timecode", RawExr::words({0x23595929, 0})))["input/timecode"],
              "23:59:59:29");
}

TEST_F(HostMetadata, IgnoresATimecodeWordWithDigitsAboveNine) {
    EXPECT_EQ(keysOf(RawExr::attribute("timeCode", "timecode", RawExr::words({0x1000010a, 0}))).count("input/timecode"),
              0u);
}

TEST_F(HostMetadata, ShowsTheFrameRate) {
    const auto value = [this] {
        keysOf(RawExr::attribute("framesPerSecond", "rational", RawExr::words({24000, 1001})));
        return hostMetadata(openReader(path)->readHeader(), path, 1).at("input/frame_rate");
    }();
    EXPECT_DOUBLE_EQ(std::get<double>(value), 24000.0 / 1001.0);
}

} // namespace
