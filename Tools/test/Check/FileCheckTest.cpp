#include "Check/FileCheck.h"

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <exception>
#include <random>
#include <string>
#include <vector>

#include "CorrectionFile/Parser/Parser.h"
#include "Support/CorrectionFileText.h"
#include "Support/TemporaryFolder.h"

using Support::CorrectionFileText;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;
using Tools::Finding;

namespace {

using Lines = std::vector<std::string>;

std::string line(const Finding& finding) {
    return fmt::format("{} {} {}: {}", finding.severity == Finding::Severity::Defect ? "defect" : "warning",
                       finding.lineNumber, finding.kind, finding.message);
}

Lines findings(const std::string& text) {
    Lines lines;
    Tools::FileCheck([&](const Finding& finding) { lines.push_back(line(finding)); }).checkText(text);
    return lines;
}

Lines findings(const CorrectionFileText& text) { return findings(text.string()); }

Lines defects(const std::string& text) {
    Lines lines;
    Tools::FileCheck([&](const Finding& finding) {
        if (finding.severity == Finding::Severity::Defect) lines.push_back(line(finding));
    }).checkText(text);
    return lines;
}

// Three frames, about which there is nothing to say. Frame lines begin at line 24.
CorrectionFileText flawless() {
    return CorrectionFileText()
        .with("clipDurationFrames", "3")
        .with("tcFps", "25")
        .with("sensorWidth", "30")
        .withFrame(1001, "10.00.00.00")
        .withFrame(1002, "10.00.00.01")
        .withFrame(1003, "10.00.00.02");
}

bool parserAccepts(const std::string& text) {
    try {
        CorrectionData::Content content;
        CorrectionFile::Parser().parse(text, content);
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

std::string withFrameLine(const std::string& line) { return CorrectionFileText().withFrameLine(line).string(); }

} // namespace

TEST(FileCheck, findsNothingInAFlawlessFile) { EXPECT_THAT(findings(flawless()), IsEmpty()); }

TEST(FileCheck, tellsTheFramesOfAFile) {
    const Tools::CheckSummary summary = Tools::FileCheck([](const Finding&) {}).checkText(flawless().string());
    EXPECT_EQ("3 frames 1001-1003, version 3", fmt::format("{} frames {}-{}, version {}", summary.frameCount,
                                                           summary.firstFrame, summary.lastFrame, summary.fileVersion));
}

TEST(FileCheck, listsDefectsOfHeaderAndBodyInOneGo) {
    CorrectionFileText text = flawless();
    text.without("clipName").with("tcFps", "abc").withHeaderLine("no separator").withFrameLine("-1;;;");
    EXPECT_THAT(
        defects(text.string()),
        ElementsAre(
            "defect 21 header-line: a header line must read key:=value with exactly one \":=\", but this one is \"no "
            "separator\"",
            "defect 0 header-entry: Header entry with key \"clipName\" was not found",
            "defect 15 header-entry: Header entry with key \"tcFps\" does not have a valid value: \"abc\" is not a "
            "number",
            "defect 27 frame-line: frame \"-1\": 4 columns instead of 10 or more; frame number -1 is negative; 1 "
            "height values instead of 7; 1 shading values instead of 7; 1 distortion values instead of 7"));
}

TEST(FileCheck, namesEachBadValueOfALine) {
    EXPECT_THAT(
        defects(withFrameLine("5;0,1,2,3,4,5,6;100,99,abc,101,nan,95,94;0,0,0,0,0,0,-100.5;;;;;;00:00:00:00")),
        ElementsAre("defect 24 frame-line: frame \"5\": shading 3 is \"abc\", not a number; shading 4 is \"101\", "
                    "outside 0…100; shading 5 is \"nan\", outside 0…100; distortion 7 is \"-100.5\", outside "
                    "-100…100"));
}

TEST(FileCheck, guessesThatDecimalsWereWrittenWithCommas) {
    EXPECT_THAT(
        defects(withFrameLine("5;0,0,1,0,2,0,3,0,4,0,5,0,6,0;9,9,9,9,9,9,9;0,0,0,0,0,0,0;;;;;;00:00:00:00")),
        ElementsAre(
            "defect 24 frame-line: frame \"5\": 14 height values instead of 7 (use a decimal point, not a comma)"));
}

TEST(FileCheck, saysThatAByteOrderMarkHidesTheVersion) {
    EXPECT_THAT(
        findings("\xEF\xBB\xBF" + flawless().string()),
        ElementsAre("warning 1 byte-order-mark: the file begins with a UTF-8 byte order mark, which hides line 1; save "
                    "it without one",
                    "defect 0 version: Version could not be found: no line begins with \"# OLCF Version \"; line 1 "
                    "reads \"\xEF\xBB\xBF# OLCF Version 3\""));
}

TEST(FileCheck, goesOnBehindAVersionThatIsNotSupported) {
    EXPECT_THAT(defects(flawless().withVersionLine("# OLCF Version 3 ").withFrameLine("x").string()),
                ElementsAre(StartsWith("defect 1 version: Version is not supported"),
                            StartsWith("defect 27 frame-line: frame \"x\": 1 columns instead of 10")));
}

TEST(FileCheck, goesOnBehindAMissingHeaderEnd) {
    CorrectionFileText text = flawless();
    text.headerEnd = "header_end";
    EXPECT_THAT(defects(text.withFrameLine("x").string()),
                ElementsAre("defect 22 header-line: a header line must read key:=value with exactly one \":=\", but "
                            "this one is \"header_end\"",
                            "defect 2 header-end: Header end could not be found: no line after this one reads "
                            "\"HEADER_END\"; line 22 reads \"header_end\"",
                            StartsWith("defect 27 frame-line")));
}

TEST(FileCheck, saysWhichLineLooksLikeTheMissingHeaderStart) {
    CorrectionFileText text = flawless();
    text.headerStart = "HEADER_START ";
    EXPECT_THAT(defects(text.string()),
                ElementsAre("defect 0 header-start: Header start could not be found: no line reads "
                            "\"HEADER_START\"; line 2 reads \"HEADER_START \""));
}

TEST(FileCheck, missesTheBody) {
    CorrectionFileText text = flawless();
    text.titleLine = "Frame;";
    EXPECT_THAT(defects(text.string()),
                ElementsAre("defect 0 body-start: Body start could not be found: no line after the "
                            "version line begins with \"frame;\""));
}

TEST(FileCheck, warnsOfValuesThatSilentlyBecameZero) {
    EXPECT_THAT(
        findings(flawless().with("lensMaxFocalLength", "70000").with("tcDrop", "false").with("shadingGamma", "2,2")),
        ElementsAre("warning 7 became-zero: lensMaxFocalLength \"70000\" counts as 0",
                    "warning 17 became-zero: tcDrop \"false\" counts as false (0)",
                    "warning 19 became-zero: shadingGamma \"2,2\" counts as 0"));
}

TEST(FileCheck, warnsOfANegativeWidth) {
    EXPECT_THAT(findings(flawless().with("lensMinFocalLength", "-1")),
                ElementsAre("warning 6 negative: lensMinFocalLength \"-1\" counts as 65535"));
}

TEST(FileCheck, warnsOfDuplicateKeys) {
    EXPECT_THAT(
        findings(flawless().withHeaderLine("clipWidth:=1").withHeaderLine("other:=1").withHeaderLine("other:=2")),
        ElementsAre("warning 22 duplicate-key: key \"clipWidth\" is repeated; the value of line 14 is used"));
}

TEST(FileCheck, warnsOfAMisspeltKey) {
    EXPECT_THAT(findings(flawless().withHeaderLine("clipwidth :=1")),
                ElementsAre("warning 22 header-key: key \"clipwidth \" is ignored; did you mean \"clipWidth\"?"));
}

TEST(FileCheck, warnsOfDuplicateFrames) {
    EXPECT_THAT(findings(flawless().withFrame(1003, "10.00.00.02")),
                ElementsAre("warning 27 duplicate-frame: frame 1003 is repeated; this line replaces line 26"));
}

TEST(FileCheck, warnsOfGaps) {
    EXPECT_THAT(
        findings(flawless().with("clipDurationFrames", "4").withFrame(1010, "10.00.00.09")),
        ElementsAre(
            "warning 26 gap: no line for the frames after 1003 and before 1010; they use the line of frame 1003"));
}

TEST(FileCheck, warnsOfATimecodeThatLeadsToAnotherLine) {
    EXPECT_THAT(findings(flawless().with("clipDurationFrames", "4").withFrame(1004, "10.00.00.05")),
                ElementsAre("warning 27 timecode-order: frame 1004: its timecode is not 3 frames after the first "
                            "frame's; a look-up by timecode uses another line"));
}

TEST(FileCheck, warnsOfATimecodeThatIsNone) {
    EXPECT_THAT(
        findings(flawless().with("clipDurationFrames", "4").withFrame(1004, "10.00.00.25")),
        ElementsAre("warning 27 timecode: frame 1004: timecode \"10:00:00:25\" is not valid at 25 frames per second"));
}

TEST(FileCheck, warnsOfARateThatIsNotFinite) {
    EXPECT_THAT(
        findings(flawless().with("tcFps", "nan")),
        ElementsAre(
            "warning 16 timecode-rate: tcFps \"nan\" is not a usable rate; frames cannot be looked up by timecode"));
}

TEST(FileCheck, warnsOfAFileWithoutFrames) {
    EXPECT_THAT(findings(CorrectionFileText().string()),
                ElementsAre("warning 0 no-frames: there is no readable frame line"));
}

TEST(FileCheck, warnsOnceOfAFitThatIsAbsurdInManyFrames) {
    const char* const values = ";0,5,5.0000005,10,15,18,20;100,99,90,96,93,89,84;0,0,0,0,0,0,0;;;;;;";
    CorrectionFileText text;
    text.with("clipDurationFrames", "2").with("tcFps", "25");
    text.withFrameLine(fmt::format("1{}10.00.00.00", values)).withFrameLine(fmt::format("2{}10.00.00.01", values));
    const std::string warning = "warning 24 near-equal-heights: frame 1: heights 5 and 5.0000005 mm are nearly equal";
    EXPECT_THAT(findings(text), testing::Contains(warning + " (and 1 more frame)"));
    text.withFrameLine(fmt::format("3{}10.00.00.02", values));
    EXPECT_THAT(findings(text), testing::Contains(warning + " (and 2 more frames)"));
}

TEST(FileCheck, warnsThatTheRecordingFormatIsUnknown) {
    EXPECT_THAT(findings(flawless().with("sensorWidth", "0")),
                ElementsAre(StartsWith("warning 0 recording-format: the header gives no recording format")));
}

TEST(FileCheck, readsLineEndingsLikeTheParser) {
    CorrectionFileText text = flawless();
    text.lineEnd = "\r\n";
    EXPECT_THAT(findings(text), IsEmpty());
}

TEST(FileCheck, refusesAFolder) {
    const Support::TemporaryFolder folder;
    Lines lines;
    Tools::FileCheck([&](const Finding& finding) { lines.push_back(line(finding)); }).check(folder.path());
    EXPECT_THAT(lines, ElementsAre("defect 0 unreadable: Correction file could not be read."));
}

TEST(FileCheck, takesATitleLineWithinTheHeaderForAnEntryAsTheParserDoes) {
    CorrectionFileText text = flawless().withHeaderLine("frame;x:=y").withVersionLine("");
    text.headerEnd = "HEADER_END\n# OLCF Version 3";
    ASSERT_TRUE(parserAccepts(text.string()));
    EXPECT_THAT(findings(text), IsEmpty());
}

// Random damage: bytes replaced, removed or doubled, lines dropped, doubled or swapped.
TEST(FileCheck, findsADefectExactlyWhenTheParserRefusesTheFile) {
    const std::string bytes = ";,:=.-+0179anfe \r\n#\xEF\xBB\xBFx";
    const std::string valid = flawless().string();
    std::mt19937 random(1);
    const auto upTo = [&](std::size_t end) { return static_cast<std::size_t>(random() % end); };
    std::size_t acceptedCount = 0;
    for (int round = 0; round < 4000; ++round) {
        std::string text = valid;
        for (std::size_t change = upTo(3) + 1; change > 0 && !text.empty(); --change) {
            const std::size_t position = upTo(text.size());
            switch (upTo(4)) {
                case 0:
                    text[position] = bytes[upTo(bytes.size())];
                    break;
                case 1:
                    text.erase(position, 1 + upTo(3));
                    break;
                case 2:
                    text.insert(position, text.substr(upTo(text.size()), 1 + upTo(40)));
                    break;
                default: {
                    const std::size_t start = text.rfind('\n', position) + 1;
                    const std::string whole = text.substr(start, text.find('\n', start) - start + 1);
                    text.erase(start, whole.size());
                    if (upTo(2) == 0) text.insert(text.rfind('\n', upTo(text.size() + 1)) + 1, whole);
                }
            }
        }
        const bool isAccepted = parserAccepts(text);
        acceptedCount += isAccepted ? 1 : 0;
        ASSERT_EQ(isAccepted, defects(text).empty()) << text;
    }
    EXPECT_GT(acceptedCount, 400u); // otherwise the damage would say nothing about files that are accepted
    EXPECT_LT(acceptedCount, 3600u);
}
