#include "CorrectionFile/Parser/Parser.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <boost/lexical_cast/bad_lexical_cast.hpp>
#include <cmath>
#include <limits>

#include "CorrectionFile/Parser/InvalidFormatException.h"
#include "Support/CommaLocale.h"
#include "Support/CorrectionFileText.h"

using CorrectionData::Content;
using CorrectionData::Header;
using CorrectionFile::InvalidFormatException;
using Support::CorrectionFileText;
using testing::ElementsAre;

namespace {

const char* const version2 = "# OLCF Version 2";

Content parsed(const std::string& text) {
    Content content;
    CorrectionFile::Parser().parse(text, content);
    return content;
}

Content parsed(const CorrectionFileText& text) { return parsed(text.string()); }

Header parsedHeader(const CorrectionFileText& text) {
    Header header;
    CorrectionFile::Parser().parseHeader(text.string(), header);
    return header;
}

// The detailed description of the format error, "bad cast" for the conversion's own error, or "nothing". On failure
// the content must be untouched.
std::string thrownByParsing(const std::string& text) {
    Content content;
    content.header.clipName = "untouched";
    content.frames[7].timecode = "untouched";
    std::string thrown = "nothing";
    try {
        CorrectionFile::Parser().parse(text, content);
        return thrown;
    } catch (const InvalidFormatException& exception) {
        thrown = exception.detailedDescription();
    } catch (const boost::bad_lexical_cast&) {
        thrown = "bad cast";
    }
    const bool isUntouched = content.header.clipName == "untouched" && content.frames.size() == 1 &&
                             content.frames[7].timecode == "untouched";
    return isUntouched ? thrown : "the content was changed on failure";
}

std::string reason(const std::string& text) {
    return "Correction file could not be parsed due to an invalid format.\nReason: " + text + "\n";
}

std::string invalidLine(int number, const std::string& line) {
    return "Correction file could not be parsed due to an invalid format.\nLine Number: " + std::to_string(number) +
           "\nLine Content: \"" + line + "\"\n";
}

// Line numbers of the text that CorrectionFileText writes: version, header start, nineteen entries, header end, title.
constexpr int lineAfterEntries = 22;
constexpr int firstFrameLine = 24;

std::string frameLine(const std::string& number, const std::string& heights, const std::string& shading,
                      const std::string& radialDistortion, const std::string& timecode = "10.00.01.12") {
    return number + ";" + heights + ";" + shading + ";" + radialDistortion + ";;;;;;" + timecode;
}

const char* const sevenHeights = "0,3,6,9,12,15,18";
const char* const sevenShading = "100,99,98,97,96,95,94";
const char* const sevenDistortion = "0,-1,2,-3,4,-5,6";

std::string withFrameLine(const std::string& line) { return CorrectionFileText().withFrameLine(line).string(); }

std::string withVersion2FrameLine(const std::string& line) {
    return CorrectionFileText().withVersionLine(version2).withFrameLine(line).string();
}

} // namespace

TEST(Parser, ReadsEveryHeaderEntry) {
    const Header header = parsed(CorrectionFileText()).header;
    EXPECT_EQ(header.lensManufacturer, "Lens Maker");
    EXPECT_EQ(header.lensTypeName, "Prime 40");
    EXPECT_EQ(header.lensSerialNumber, "0815");
    EXPECT_EQ(header.lensMinFocalLength, 40);
    EXPECT_EQ(header.lensMaxFocalLength, 41);
    EXPECT_EQ(header.cameraManufacturer, "Camera Maker");
    EXPECT_EQ(header.cameraModel, "Model One");
    EXPECT_EQ(header.sensorWidth, 36.7f);
    EXPECT_EQ(header.clipName, "A001C002");
    EXPECT_EQ(header.videoFileName, "A001C002.mov");
    EXPECT_EQ(header.clipDurationFrames, 100u);
    EXPECT_EQ(header.clipWidth, 4096u);
    EXPECT_EQ(header.clipHeight, 2160u);
    EXPECT_EQ(header.tcFps, 23.976f);
    EXPECT_FALSE(header.tcDrop);
    EXPECT_TRUE(header.enableLensShadingCorrection);
    EXPECT_EQ(header.shadingGamma, 2.2f);
    EXPECT_TRUE(header.enableLensDistortionCorrection);
    EXPECT_EQ(header.distortionZoom, 1.05f);
}

TEST(Parser, ReadsAVersion3FrameWithItsOwnHeights) {
    const Content content = parsed(
        withFrameLine(frameLine("12", "0,3.5,7,10.5,14,17.5,21", "100,99,98,97,96,95,94.5", "0,-0.25,0.5,-1,2,-5,10")));
    ASSERT_EQ(content.frames.size(), 1u);
    const CorrectionData::Frame& frame = content.frames.at(12);
    EXPECT_EQ(frame.frameNumber, 12);
    EXPECT_THAT(frame.heights, ElementsAre(0.0f, 3.5f, 7.0f, 10.5f, 14.0f, 17.5f, 21.0f));
    EXPECT_THAT(frame.shading, ElementsAre(100.0f, 99.0f, 98.0f, 97.0f, 96.0f, 95.0f, 94.5f));
    EXPECT_THAT(frame.radialDistortion, ElementsAre(0.0f, -0.25f, 0.5f, -1.0f, 2.0f, -5.0f, 10.0f));
    EXPECT_EQ(frame.timecode, "10:00:01:12");
}

TEST(Parser, ReadsAVersion2FrameAtTheSixDefaultHeights) {
    const Content content =
        parsed(withVersion2FrameLine("3;100,99,98,97,96,95;0,-1,2,-3,4,-5;a;b;c;d;e;10:00:01:12;more"));
    const CorrectionData::Frame& frame = content.frames.at(3);
    EXPECT_THAT(frame.heights, ElementsAre(0.0f, 5.0f, 10.0f, 15.0f, 18.0f, 21.4f));
    EXPECT_THAT(frame.shading, ElementsAre(100.0f, 99.0f, 98.0f, 97.0f, 96.0f, 95.0f));
    EXPECT_THAT(frame.radialDistortion, ElementsAre(0.0f, -1.0f, 2.0f, -3.0f, 4.0f, -5.0f));
    EXPECT_EQ(frame.timecode, "10:00:01:12");
}

TEST(Parser, ReadsCrLfLineEndingsLikeLf) {
    CorrectionFileText text;
    text.withFrame(0, "10.00.00.00").withFrame(1, "10.00.00.01");
    text.lineEnd = "\r\n";
    const Content content = parsed(text);
    EXPECT_EQ(content.header.videoFileName, "A001C002.mov");
    EXPECT_EQ(content.header.distortionZoom, 1.05f);
    ASSERT_EQ(content.frames.size(), 2u);
    EXPECT_EQ(content.frames.at(1).timecode, "10:00:00:01");
}

TEST(Parser, RemovesAStrayCarriageReturnInsideALine) {
    const Content content =
        parsed(CorrectionFileText()
                   .with("videoFileName", "A\r1.mov")
                   .withVersionLine("# OLCF\r Version 3")
                   .withFrameLine(frameLine("\r1\r2", sevenHeights, sevenShading, sevenDistortion)));
    EXPECT_EQ(content.header.videoFileName, "A1.mov");
    EXPECT_EQ(content.frames.count(12), 1u);
}

TEST(Parser, AcceptsALastLineWithoutALineFeed) {
    std::string text = CorrectionFileText().withFrame(0, "10.00.00.00").string();
    text.pop_back();
    EXPECT_EQ(parsed(text).frames.at(0).timecode, "10:00:00:00");
}

TEST(Parser, AcceptsAFileWithoutFrames) { EXPECT_TRUE(parsed(CorrectionFileText()).frames.empty()); }

TEST(Parser, ReplacesWhatTheContentHeldBefore) {
    Content content;
    content.frames[7].timecode = "old";
    CorrectionFile::Parser().parse(CorrectionFileText().withFrame(0, "10.00.00.00").string(), content);
    EXPECT_EQ(content.frames.size(), 1u);
}

TEST(Parser, SkipsEmptyLinesInHeaderAndBody) {
    const Content content = parsed(CorrectionFileText()
                                       .withHeaderLine("")
                                       .withHeaderLine("\r")
                                       .withFrameLine("")
                                       .withFrame(0, "10.00.00.00")
                                       .withFrameLine("\r"));
    EXPECT_EQ(content.frames.size(), 1u);
}

TEST(Parser, IgnoresWhatStandsOutsideTheBlocks) {
    const std::string text = "any text\nclipName:=wrong\na:=b:=c\n" + CorrectionFileText().string();
    EXPECT_EQ(parsed(text).header.clipName, "A001C002");
}

TEST(Parser, TakesForAVersionLineOnlyWhatBeginsLikeOne) {
    const Content content = parsed(CorrectionFileText()
                                       .withVersionLine("# OLCF Version\n# OLCF Version4\n # OLCF Version 4\n"
                                                        "# OLCF Version 3")
                                       .withFrame(0, "10.00.00.00"));
    EXPECT_EQ(content.frames.size(), 1u);
}

TEST(Parser, FindsTheBodyWithoutAHeader) {
    std::map<std::uint32_t, CorrectionData::Frame> frames;
    CorrectionFile::Parser().parseBody(
        "# OLCF Version 3\nframe;\n" + frameLine("7", sevenHeights, sevenShading, sevenDistortion), frames);
    EXPECT_EQ(frames.count(7), 1u);
}

TEST(Parser, FindsTheHeaderWithoutAVersionLineOrABody) {
    CorrectionFileText text;
    text.versionLine = "";
    text.titleLine = "";
    EXPECT_EQ(parsedHeader(text).clipName, "A001C002");
}

TEST(Parser, KeepsTheFirstValueOfAKeyThatOccursTwice) {
    EXPECT_EQ(parsedHeader(CorrectionFileText().withHeaderLine("clipName:=second")).clipName, "A001C002");
}

TEST(Parser, AcceptsAnEmptyValue) { EXPECT_EQ(parsedHeader(CorrectionFileText().with("clipName", "")).clipName, ""); }

TEST(Parser, IgnoresUnknownKeysAndAnEmptyKey) {
    EXPECT_EQ(parsedHeader(CorrectionFileText().with("colour", "blue").withHeaderLine(":=x")).clipName, "A001C002");
}

TEST(Parser, ReadsAHeaderOfAMillionLines) {
    std::string lines;
    for (int i = 0; i < 1000000; ++i) lines += "key" + std::to_string(i) + ":=value\n";
    EXPECT_EQ(parsedHeader(CorrectionFileText().with("clipName", "A").withHeaderLine(lines)).clipName, "A");
}

TEST(Parser, RefusesALineOfManyMegabytesLikeAnyOther) {
    EXPECT_EQ(thrownByParsing(std::string(std::size_t{64} << 20, ';')), reason("Header start could not be found."));
}

TEST(Parser, TakesTextValuesUntrimmed) {
    EXPECT_EQ(parsedHeader(CorrectionFileText().with("clipName", " A 1 ")).clipName, " A 1 ");
}

TEST(Parser, LeavesTheHeaderUntouchedOnFailure) {
    Header header;
    header.clipName = "untouched";
    EXPECT_THROW(CorrectionFile::Parser().parseHeader(CorrectionFileText().with("tcFps", "abc").string(), header),
                 InvalidFormatException);
    EXPECT_EQ(header.clipName, "untouched");
}

TEST(Parser, AddsABodyToTheFramesThatTheMapHolds) {
    std::map<std::uint32_t, CorrectionData::Frame> frames;
    frames[0].timecode = "replaced";
    frames[5].timecode = "kept";
    CorrectionFile::Parser().parseBody(CorrectionFileText().withFrame(0, "10.00.00.00").string(), frames);
    ASSERT_EQ(frames.size(), 2u);
    EXPECT_EQ(frames[0].timecode, "10:00:00:00");
    EXPECT_EQ(frames[5].timecode, "kept");
}

TEST(Parser, LetsTheLaterOfTwoLinesWithTheSameFrameNumberReplaceTheEarlier) {
    const Content content = parsed(
        CorrectionFileText().withFrame(4, "10.00.00.04").withFrame(5, "10.00.00.05").withFrame(4, "11.00.00.04"));
    ASSERT_EQ(content.frames.size(), 2u);
    EXPECT_EQ(content.frames.at(4).timecode, "11:00:00:04");
}

TEST(Parser, SortsFramesByNumberAndKeepsGaps) {
    const Content content = parsed(CorrectionFileText()
                                       .withFrame(9, "10.00.00.09")
                                       .withFrame(2, "10.00.00.02")
                                       .withFrame(2147483647, "10.00.00.05"));
    std::vector<std::uint32_t> numbers;
    for (const auto& [number, frame] : content.frames) numbers.push_back(number);
    EXPECT_THAT(numbers, ElementsAre(2u, 9u, 2147483647u));
}

TEST(Parser, ReadsASignAndLeadingZerosInAFrameNumber) {
    const Content content = parsed(CorrectionFileText()
                                       .withFrameLine(frameLine("+5", sevenHeights, sevenShading, sevenDistortion))
                                       .withFrameLine(frameLine("-0", sevenHeights, sevenShading, sevenDistortion))
                                       .withFrameLine(frameLine("007", sevenHeights, sevenShading, sevenDistortion)));
    EXPECT_EQ(content.frames.count(0) + content.frames.count(5) + content.frames.count(7), 3u);
}

TEST(Parser, TakesAnyTextAsATimecode) {
    EXPECT_EQ(
        parsed(withFrameLine(frameLine("0", sevenHeights, sevenShading, sevenDistortion, ""))).frames.at(0).timecode,
        "");
    const std::string zeroByte("a.\0", 3);
    EXPECT_EQ(parsed(withFrameLine(frameLine("0", sevenHeights, sevenShading, sevenDistortion, zeroByte)))
                  .frames.at(0)
                  .timecode,
              std::string("a:\0", 3));
}

TEST(Parser, AcceptsTheEndsOfTheRanges) {
    const Content content =
        parsed(withFrameLine(frameLine("0", "0,100,1,2,3,4,5", "0,100,1,2,3,4,5", "-100,100,0,-0,1,2,3")));
    EXPECT_EQ(content.frames.at(0).shading[1], 100.0f);
    EXPECT_EQ(content.frames.at(0).radialDistortion[0], -100.0f);
}

TEST(Parser, ReadsNumbersInEverySpellingOfAStrictConversion) {
    const Content content =
        parsed(withFrameLine(frameLine("0", "0.,.5,+1,1e1,1.5E+1,020,2.5e1", sevenShading, "-0,-.5,0,0,0,0,1e-50")));
    EXPECT_THAT(content.frames.at(0).heights, ElementsAre(0.0f, 0.5f, 1.0f, 10.0f, 15.0f, 20.0f, 25.0f));
    EXPECT_EQ(content.frames.at(0).radialDistortion[6], 0.0f);
}

TEST(Parser, ReadsNumbersTheSameUnderALocaleWithADecimalComma) {
    const Support::CommaLocale locale;
    const Content content =
        parsed(CorrectionFileText()
                   .with("sensorWidth", "+36.7")
                   .with("clipWidth", "4.096")
                   .withFrameLine(frameLine("1", "0.5,.5,6,9,12,15,18", sevenShading, sevenDistortion)));
    EXPECT_EQ(content.header.tcFps, 23.976f);
    EXPECT_EQ(content.header.sensorWidth, 36.7f);
    EXPECT_EQ(content.header.clipWidth, 0u) << "a digit group is no number";
    EXPECT_EQ(content.frames.at(1).heights[0], 0.5f);
    EXPECT_EQ(content.frames.at(1).heights[1], 0.5f);
}

TEST(Parser, AcceptsATimecodeRateThatConvertsThoughItIsOfNoUse) {
    EXPECT_TRUE(std::isnan(parsedHeader(CorrectionFileText().with("tcFps", "nan")).tcFps));
    EXPECT_EQ(parsedHeader(CorrectionFileText().with("tcFps", "inf")).tcFps, std::numeric_limits<float>::infinity());
    EXPECT_EQ(parsedHeader(CorrectionFileText().with("tcFps", "-1")).tcFps, -1.0f);
    EXPECT_EQ(parsedHeader(CorrectionFileText().with("tcFps", "0")).tcFps, 0.0f);
}

namespace {

struct LenientValue {
    const char* key;
    const char* value;
    double expected;
};

std::ostream& operator<<(std::ostream& stream, const LenientValue& row) {
    return stream << row.key << " '" << row.value << "'";
}

double fieldOf(const Header& header, const std::string& key) {
    if (key == "lensMinFocalLength") return header.lensMinFocalLength;
    if (key == "lensMaxFocalLength") return header.lensMaxFocalLength;
    if (key == "sensorWidth") return header.sensorWidth;
    if (key == "clipDurationFrames") return header.clipDurationFrames;
    if (key == "clipWidth") return header.clipWidth;
    if (key == "clipHeight") return header.clipHeight;
    if (key == "tcDrop") return header.tcDrop;
    if (key == "enableLensShadingCorrection") return header.enableLensShadingCorrection;
    if (key == "shadingGamma") return header.shadingGamma;
    if (key == "enableLensDistortionCorrection") return header.enableLensDistortionCorrection;
    return header.distortionZoom;
}

class HeaderValue : public testing::TestWithParam<LenientValue> {};

} // namespace

TEST_P(HeaderValue, ConvertsOrBecomesZero) {
    const auto& [key, value, expected] = GetParam();
    EXPECT_EQ(fieldOf(parsedHeader(CorrectionFileText().with(key, value)), key), expected);
}

INSTANTIATE_TEST_SUITE_P(
    Parser, HeaderValue,
    testing::Values(LenientValue{"clipWidth", "abc", 0}, LenientValue{"clipWidth", "", 0},
                    LenientValue{"clipWidth", "-1", 4294967295.0}, LenientValue{"clipWidth", "+5", 5},
                    LenientValue{"clipWidth", "007", 7}, LenientValue{"clipWidth", "4294967295", 4294967295.0},
                    LenientValue{"clipWidth", "4294967296", 0}, LenientValue{"clipWidth", " 1", 0},
                    LenientValue{"clipWidth", "1.5", 0}, LenientValue{"clipHeight", "x", 0},
                    LenientValue{"clipDurationFrames", "1e3", 0}, LenientValue{"lensMinFocalLength", "-1", 65535},
                    LenientValue{"lensMinFocalLength", "65536", 0}, LenientValue{"lensMaxFocalLength", "65535", 65535},
                    LenientValue{"sensorWidth", "36,7", 0}, LenientValue{"sensorWidth", "", 0},
                    LenientValue{"shadingGamma", "1e39", 0}, LenientValue{"distortionZoom", "zoom", 0},
                    LenientValue{"tcDrop", "1", 1}, LenientValue{"tcDrop", "01", 1}, LenientValue{"tcDrop", "+1", 1},
                    LenientValue{"tcDrop", "-0", 0}, LenientValue{"tcDrop", "true", 0}, LenientValue{"tcDrop", "2", 0},
                    LenientValue{"enableLensShadingCorrection", "", 0},
                    LenientValue{"enableLensDistortionCorrection", "yes", 0}));

namespace {

// A defect turns the valid text of a correction file into one that must be reported as told.
struct Defect {
    const char* name;
    std::string text;
    std::string expected;
};

std::ostream& operator<<(std::ostream& stream, const Defect& defect) { return stream << defect.name; }

class CorrectionFileDefect : public testing::TestWithParam<Defect> {};

Defect defectiveFrameLine(const char* name, const std::string& line) {
    return {name, withFrameLine(line), invalidLine(firstFrameLine, line)};
}

Defect defectiveVersion2FrameLine(const char* name, const std::string& line) {
    return {name, withVersion2FrameLine(line), invalidLine(firstFrameLine, line)};
}

Defect badCast(const char* name, const std::string& line) { return {name, withFrameLine(line), "bad cast"}; }

Defect defectiveHeights(const char* name, const std::string& heights) {
    return defectiveFrameLine(name, frameLine("0", heights, sevenShading, sevenDistortion));
}

Defect defectiveShading(const char* name, const std::string& shading) {
    return defectiveFrameLine(name, frameLine("0", sevenHeights, shading, sevenDistortion));
}

Defect defectiveDistortion(const char* name, const std::string& radialDistortion) {
    return defectiveFrameLine(name, frameLine("0", sevenHeights, sevenShading, radialDistortion));
}

Defect defectiveHeaderLine(const char* name, const std::string& line) {
    return {name, CorrectionFileText().withHeaderLine(line).string(), invalidLine(lineAfterEntries, line)};
}

template <typename Change>
Defect changed(const char* name, Change change, const std::string& expected) {
    CorrectionFileText text;
    text.withFrame(0, "10.00.00.00");
    change(text);
    return {name, text.string(), expected};
}

std::vector<Defect> defects() {
    const std::string h = sevenHeights;
    const std::string s = sevenShading;
    const std::string d = sevenDistortion;
    using Text = CorrectionFileText;
    std::vector<Defect> rows = {
        {"EmptyText", "", reason("Header start could not be found.")},
        changed(
            "HeaderStartMissing", [](Text& t) { t.headerStart = ""; }, reason("Header start could not be found.")),
        changed(
            "HeaderStartWithABlank", [](Text& t) { t.headerStart = "HEADER_START "; },
            reason("Header start could not be found.")),
        // Without the end line the title line is taken for an entry.
        changed(
            "HeaderEndMissing", [](Text& t) { t.headerEnd = ""; },
            invalidLine(23,
                        "frame;heights;shading;radialDistortion;focus;iris;zoom;focalLength;entrancePupil;"
                        "timecode")),
        {"TextEndsInTheHeader", "HEADER_START\nclipName:=A\n", reason("Header end could not be found.")},
        defectiveHeaderLine("HeaderLineWithoutASeparator", "clipName=A"),
        defectiveHeaderLine("HeaderLineWithTwoSeparators", "clipName:=A:=B"),
        defectiveHeaderLine("HeaderLineOfTwoSeparators", ":=:="),
        defectiveHeaderLine("HeaderLineOfABlank", " "),
        changed(
            "EmptyVideoFileName", [](Text& t) { t.with("videoFileName", ""); },
            reason("Header entry with key \"videoFileName\" does not have a value.")),
        changed(
            "TimecodeRateOfLetters", [](Text& t) { t.with("tcFps", "abc"); },
            reason("Header entry with key \"tcFps\" does not have a valid value.")),
        changed(
            "TimecodeRateEmpty", [](Text& t) { t.with("tcFps", ""); },
            reason("Header entry with key \"tcFps\" does not have a valid value.")),
        changed(
            "TimecodeRateBeyondAFloat", [](Text& t) { t.with("tcFps", "1e39"); },
            reason("Header entry with key \"tcFps\" does not have a valid value.")),
        changed(
            "TimecodeRateWithADecimalComma", [](Text& t) { t.with("tcFps", "23,976"); },
            reason("Header entry with key \"tcFps\" does not have a valid value.")),
        changed(
            "EmptyVideoFileNameBeforeABadRate", [](Text& t) { t.with("tcFps", "").with("videoFileName", ""); },
            reason("Header entry with key \"videoFileName\" does not have a value.")),
        changed(
            "FirstOfTwoMissingKeys", [](Text& t) { t.without("tcFps").without("cameraModel"); },
            reason("Header entry with key \"cameraModel\" was not found.")),
        changed(
            "KeyInAnotherCase", [](Text& t) { t.without("clipName").with("ClipName", "A"); },
            reason("Header entry with key \"clipName\" was not found.")),
        changed(
            "KeyWithABlank", [](Text& t) { t.without("clipName").with("clipName ", "A"); },
            reason("Header entry with key \"clipName\" was not found.")),
        changed(
            "VersionMissing", [](Text& t) { t.versionLine = ""; }, reason("Version could not be found.")),
        changed(
            "VersionAfterAByteOrderMark", [](Text& t) { t.versionLine = "\xef\xbb\xbf# OLCF Version 3"; },
            reason("Version could not be found.")),
        changed(
            "VersionTwoWithATrailingBlank", [](Text& t) { t.versionLine = "# OLCF Version 2 "; },
            reason("Version is not supported.")),
        changed(
            "VersionThreeWithATrailingBlank", [](Text& t) { t.versionLine = "# OLCF Version 3 "; },
            reason("Version is not supported.")),
        changed(
            "VersionFour", [](Text& t) { t.versionLine = "# OLCF Version 4"; }, reason("Version is not supported.")),
        changed(
            "VersionWithoutANumber", [](Text& t) { t.versionLine = "# OLCF Version "; },
            reason("Version is not supported.")),
        changed(
            "FirstOfTwoVersionsUnsupported", [](Text& t) { t.versionLine = "# OLCF Version 1\n# OLCF Version 3"; },
            reason("Version is not supported.")),
        changed(
            "BodyStartMissing", [](Text& t) { t.titleLine = "title"; }, reason("Body start could not be found.")),
        changed(
            "BodyStartInAnotherCase", [](Text& t) { t.titleLine = "Frame;"; },
            reason("Body start could not be found.")),
        changed(
            "BodyStartWithoutASemicolon", [](Text& t) { t.titleLine = "frame"; },
            reason("Body start could not be found.")),
        changed(
            "BodyStartAfterABlank", [](Text& t) { t.titleLine = " frame;"; }, reason("Body start could not be found.")),
        {"BodyStartBeforeTheVersion",
         "frame;\n" + CorrectionFileText().string().substr(0, CorrectionFileText().string().find("frame;")),
         reason("Body start could not be found.")},
        defectiveFrameLine("NineColumns", "0;" + h + ";" + s + ";" + d + ";;;;;"),
        defectiveFrameLine("OneColumn", "0"),
        defectiveFrameLine("ABlank", " "),
        defectiveFrameLine("NegativeFrameNumber", frameLine("-1", h, s, d)),
        defectiveHeights("SixHeights", "0,3,6,9,12,15"),
        defectiveHeights("EightHeights", "0,3,6,9,12,15,18,21"),
        defectiveHeights("NoHeights", ""),
        defectiveShading("SixShadingValues", "100,99,98,97,96,95"),
        defectiveShading("EightShadingValues", "100,99,98,97,96,95,94,93"),
        defectiveDistortion("SixDistortionValues", "0,1,2,3,4,5"),
        defectiveDistortion("EightDistortionValues", "0,1,2,3,4,5,6,7"),
        defectiveFrameLine("SixOfEachInVersion3", frameLine("0", "0,3,6,9,12,15", "6,5,4,3,2,1", "0,1,2,3,4,5")),
        defectiveHeights("HeightAboveTheRange", "0,3,6,9,12,15,100.5"),
        defectiveHeights("HeightBelowTheRange", "-0.01,3,6,9,12,15,18"),
        defectiveShading("ShadingAboveTheRange", "100.5,99,98,97,96,95,94"),
        defectiveShading("ShadingBelowTheRange", "100,99,98,97,96,95,-1"),
        defectiveDistortion("DistortionBelowTheRange", "0,1,2,3,4,5,-100.01"),
        defectiveDistortion("DistortionAboveTheRange", "0,1,2,3,4,5,100.01"),
        // A wrong count is found before any value is converted.
        defectiveFrameLine("WrongCountBesideAWord", frameLine("0", "a,3,6,9,12,15,18", "100", d)),
        defectiveVersion2FrameLine("Version2EightColumns", "0;100,99,98,97,96,95;0,1,2,3,4,5;;;;;"),
        defectiveVersion2FrameLine("Version2SevenShadingValues",
                                   "0;100,99,98,97,96,95,94;0,1,2,3,4,5;;;;;;10.00.00.00"),
        defectiveVersion2FrameLine("Version2SevenDistortionValues",
                                   "0;100,99,98,97,96,95;0,1,2,3,4,5,6;;;;;;10.00.00.00"),
        defectiveVersion2FrameLine("Version3LineInAVersion2File", frameLine("0", h, s, d)),
        defectiveFrameLine("Version2LineInAVersion3File", "0;100,99,98,97,96,95;0,1,2,3,4,5;;;;;;10.00.00.00"),
        badCast("FrameNumberOfLetters", frameLine("abc", h, s, d)),
        badCast("FrameNumberEmpty", frameLine("", h, s, d)),
        badCast("FrameNumberTooLarge", frameLine("2147483648", h, s, d)),
        badCast("FrameNumberWithAnExponent", frameLine("1e3", h, s, d)),
        badCast("FrameNumberOfLettersBesideAWrongCount", frameLine("abc", "0", s, d)),
        badCast("HeightOfLetters", frameLine("0", "a,3,6,9,12,15,18", s, d)),
        badCast("ShadingEmpty", frameLine("0", h, "100,99,98,97,96,95,", d)),
        badCast("DistortionWithABlank", frameLine("0", h, s, "0,1,2,3,4,5, 6")),
        badCast("HeightBeyondAFloat", frameLine("0", "0,3,6,9,12,15,1e39", s, d)),
        badCast("HeightWithAZeroByte", frameLine("0", std::string("0,3,6,9,12,15,1\0", 16), s, d)),
        // Every value is converted before any range is checked.
        badCast("WordBesideAValueOutOfRange", frameLine("0", "999,3,6,9,12,15,18", s, "a,1,2,3,4,5,6")),
    };
    for (const char* key :
         {"lensManufacturer", "lensTypeName", "lensSerialNumber", "lensMinFocalLength", "lensMaxFocalLength",
          "cameraManufacturer", "cameraModel", "sensorWidth", "clipName", "videoFileName", "clipDurationFrames",
          "clipWidth", "clipHeight", "tcFps", "tcDrop", "enableLensShadingCorrection", "shadingGamma",
          "enableLensDistortionCorrection", "distortionZoom"}) {
        rows.push_back({key, CorrectionFileText().without(key).string(),
                        reason("Header entry with key \"" + std::string(key) + "\" was not found.")});
    }
    return rows;
}

std::string nameOf(const testing::TestParamInfo<Defect>& info) { return info.param.name; }

} // namespace

TEST_P(CorrectionFileDefect, IsReportedWithItsBriefAndDetailLines) {
    EXPECT_EQ(thrownByParsing(GetParam().text), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(Parser, CorrectionFileDefect, testing::ValuesIn(defects()), nameOf);

namespace {

class ValueThatIsNoNumber : public testing::TestWithParam<const char*> {};

} // namespace

TEST_P(ValueThatIsNoNumber, MakesTheLineInvalidInEveryColumn) {
    const std::string values = std::string("0,0,0,") + GetParam() + ",0,0,0";
    for (const std::string& line :
         {frameLine("0", values, sevenShading, sevenDistortion), frameLine("0", sevenHeights, values, sevenDistortion),
          frameLine("0", sevenHeights, sevenShading, values)}) {
        EXPECT_EQ(thrownByParsing(withFrameLine(line)), invalidLine(firstFrameLine, line));
    }
}

INSTANTIATE_TEST_SUITE_P(Parser, ValueThatIsNoNumber,
                         testing::Values("nan", "NaN", "-nan", "+nan", "nan(1)", "inf", "-inf", "+inf", "Infinity",
                                         "-INFINITY"));

TEST(Parser, CountsInvalidLinesByTheFilesOwnLineNumbers) {
    const std::string text = CorrectionFileText().withFrame(0, "a").withFrameLine("").withFrameLine("x").string();
    EXPECT_EQ(thrownByParsing(text), invalidLine(firstFrameLine + 2, "x"));
}

TEST(Parser, ReportsAnInvalidLineWithoutItsCarriageReturns) {
    EXPECT_EQ(thrownByParsing(withFrameLine("x\ry\r")), invalidLine(firstFrameLine, "xy"));
}
