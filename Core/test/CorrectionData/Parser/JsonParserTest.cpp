#include "CorrectionData/Parser/JsonParser.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <boost/algorithm/string/replace.hpp>
#include <cmath>
#include <thread>

#include "Exception/Exception.h"
#include "Support/CommaLocale.h"
#include "Support/JsonRecord.h"

using CorrectionData::Frame;
using CorrectionData::Header;
using CorrectionData::JsonParser;
using Support::jsonRecord;
using testing::ElementsAre;

namespace {

struct Record {
    Header header;
    Frame frame;
};

Record parse(const std::string& json) {
    Record record;
    JsonParser::parse(json, record.header, record.frame);
    return record;
}

std::string with(const std::string& part, const std::string& replacement) {
    EXPECT_NE(jsonRecord.find(part), std::string::npos) << part;
    return boost::replace_first_copy(jsonRecord, part, replacement);
}

std::string nested(std::size_t depth) {
    // The record itself is the first level.
    return with("{", "{\"extra\": " + std::string(depth - 1, '[') + std::string(depth - 1, ']') + ",");
}

void expectInvalid(const std::string& json) {
    Record record;
    record.header.cameraModel = "untouched";
    record.frame.timecode = "untouched";
    try {
        JsonParser::parse(json, record.header, record.frame);
        ADD_FAILURE() << "accepted: " << json.substr(0, 1000);
    } catch (const Exception& exception) {
        EXPECT_EQ(exception.detailedDescription(), "JSON metadata string has an invalid format.\n");
    }
    EXPECT_EQ(record.header.cameraModel, "untouched");
    EXPECT_EQ(record.frame.timecode, "untouched");
}

} // namespace

TEST(JsonParser, ReadsCameraClipSizeAndInterpolationPoints) {
    const Record record = parse(jsonRecord);
    EXPECT_EQ(record.header.cameraManufacturer, "ARRI");
    EXPECT_EQ(record.header.cameraModel, "ALEXA Mini");
    EXPECT_EQ(record.header.clipWidth, 4096u);
    EXPECT_EQ(record.header.clipHeight, 2160u);
    EXPECT_THAT(record.frame.heights, ElementsAre(0.0f, 2.5f, 5.0f, 7.5f, 10.0f, 12.5f, 15.0f));
    EXPECT_THAT(record.frame.shading, ElementsAre(100.0f, 99.5f, 98.0f, 95.5f, 92.0f, 87.5f, 82.0f));
    EXPECT_THAT(record.frame.radialDistortion, ElementsAre(0.0f, -0.5f, -2.0f, -4.5f, -8.0f, -12.5f, -18.0f));
}

TEST(JsonParser, DerivesTheSensorWidthFromImageRadiusAndClipSize) {
    EXPECT_NEAR(parse(jsonRecord).header.sensorWidth, 26.54f, 0.005f) << "rounded to two decimals";
}

TEST(JsonParser, LeavesEverythingElseAtItsDefault) {
    Record record;
    record.header.clipName = record.header.videoFileName = record.frame.timecode = "overwritten";
    record.header.tcFps = 25.0f;
    record.header.tcDrop = true;
    record.frame.frameNumber = 7;
    JsonParser::parse(jsonRecord, record.header, record.frame);
    EXPECT_EQ(record.header.clipName + record.header.videoFileName + record.frame.timecode, "");
    EXPECT_EQ(record.header.tcFps, 0.0f);
    EXPECT_FALSE(record.header.tcDrop);
    EXPECT_EQ(record.frame.frameNumber, 0);
}

TEST(JsonParser, AcceptsSixInterpolationPoints) {
    EXPECT_EQ(parse(with("[0, 2.5, 5, 7.5, 10, 12.5, 15]", "[0, 5, 10, 15, 18, 21.4]")).frame.heights.size(), 6u);
}

TEST(JsonParser, RejectsFiveInterpolationPoints) {
    expectInvalid(with("[0, 2.5, 5, 7.5, 10, 12.5, 15]", "[0, 5, 10, 15, 18]"));
}

TEST(JsonParser, RejectsEightInterpolationPoints) {
    expectInvalid(with("[0, 2.5, 5, 7.5, 10, 12.5, 15]", "[0, 1, 2, 3, 4, 5, 6, 7]"));
}

TEST(JsonParser, AcceptsListsOfDifferentLengths) {
    const Frame frame = parse(with("100, 99.5, ", "99.5, ")).frame;
    EXPECT_EQ(frame.shading.size(), 6u);
    EXPECT_EQ(frame.heights.size(), 7u);
}

TEST(JsonParser, ReadsNumbersInQuotes) { EXPECT_EQ(parse(with("4096", "\" 1920 \"")).header.clipWidth, 1920u); }

TEST(JsonParser, IgnoresOtherKeys) {
    EXPECT_EQ(parse(with("{", "{\"width\": [\"]\", {\"a\": null}],")).header.clipWidth, 4096u);
}

TEST(JsonParser, SkipsAByteOrderMark) { EXPECT_EQ(parse("\xEF\xBB\xBF" + jsonRecord).header.clipWidth, 4096u); }

TEST(JsonParser, TakesTheFirstOfTwoEqualKeys) {
    EXPECT_EQ(parse(with("\"width\": 4096", "\"width\": 2048, \"width\": 4096")).header.clipWidth, 2048u);
}

TEST(JsonParser, ReadsANegativeSizeModuloItsRange) {
    const Header header = parse(with("4096", "-1")).header;
    EXPECT_EQ(header.clipWidth, 4294967295u);
    EXPECT_TRUE(std::isfinite(header.sensorWidth));
}

TEST(JsonParser, GivesASensorWidthThatIsNoNumberForAnEmptyClip) {
    const Header header = parse(boost::replace_first_copy(with("4096", "0"), "2160", "0")).header;
    EXPECT_TRUE(std::isnan(header.sensorWidth));
}

TEST(JsonParser, ReadsItsNumbersWhateverTheGlobalLocale) {
    const Support::CommaLocale comma;
    const Record record = parse(jsonRecord);
    EXPECT_EQ(record.header.clipWidth, 4096u);
    EXPECT_EQ(record.frame.heights[1], 2.5f);
}

struct JsonDefect {
    const char* part;
    const char* replacement;
};

class JsonRecordDefect : public testing::TestWithParam<JsonDefect> {};

TEST_P(JsonRecordDefect, IsReportedAsAnInvalidFormat) { expectInvalid(with(GetParam().part, GetParam().replacement)); }

INSTANTIATE_TEST_SUITE_P(
    Each, JsonRecordDefect,
    testing::Values(JsonDefect{"\"manufacturer\"", "\"maker\""}, JsonDefect{"\"model\"", "\"m\""},
                    JsonDefect{"\"width\"", "\"w\""}, JsonDefect{"\"height\"", "\"h\""},
                    JsonDefect{"\"imageRadius\"", "\"r\""}, JsonDefect{"\"imageRadius\"", "\"image.Radius\""},
                    JsonDefect{"\"heights\"", "\"h\""}, JsonDefect{"\"shading\"", "\"s\""},
                    JsonDefect{"\"radialDistortion\"", "\"\""}, JsonDefect{"4096", "4096.5"},
                    JsonDefect{"4096", "\"wide\""}, JsonDefect{"4096", "4294967296"}, JsonDefect{"4096", "\"\""},
                    JsonDefect{"15.0", "NaN"}, JsonDefect{"15.0", "\"nan\""}, JsonDefect{"15.0", "\"inf\""},
                    JsonDefect{"15.0", "1e999"}, JsonDefect{"15.0", "\"15,0\""}, JsonDefect{"15.0", "[15.0]"},
                    JsonDefect{"99.5", "null"}, JsonDefect{"99.5", "[]"}, JsonDefect{"}", ""}, JsonDefect{"{", "["},
                    JsonDefect{"{", "{{"}, JsonDefect{"{", "x{"}));

TEST(JsonParser, RejectsAnEmptyText) { expectInvalid(""); }

TEST(JsonParser, RejectsTextBehindTheRecord) { expectInvalid(jsonRecord + "x"); }

TEST(JsonParser, RejectsEveryCutOfARecord) {
    for (std::size_t length = 0; length < jsonRecord.size(); ++length) expectInvalid(jsonRecord.substr(0, length));
}

TEST(JsonParser, AcceptsANestingOf64Levels) { EXPECT_EQ(parse(nested(64)).header.clipWidth, 4096u); }

TEST(JsonParser, RejectsANestingOf65Levels) { expectInvalid(nested(65)); }

TEST(JsonParser, DoesNotCountBracketsInsideStrings) {
    EXPECT_EQ(parse(with("ALEXA Mini", "\\\"" + std::string(100, '['))).header.cameraModel,
              "\"" + std::string(100, '['));
}

TEST(JsonParser, RejectsManyBracketsWithoutOverflowingTheStack) {
    for (const char* open : {"[", "{\"a\":", "[{\"\":"}) {
        std::string text;
        while (text.size() < 1000000) text += open;
        expectInvalid(text);
    }
}

TEST(JsonParser, AcceptsATextOfOneMebibyte) {
    EXPECT_EQ(parse(jsonRecord + std::string((1u << 20) - jsonRecord.size(), ' ')).header.clipWidth, 4096u);
}

TEST(JsonParser, RejectsALongerText) {
    expectInvalid(jsonRecord + std::string((1u << 20) - jsonRecord.size() + 1, ' '));
}
