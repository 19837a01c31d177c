#include "Clip/FilePattern.h"

#include <gtest/gtest.h>

#include "Support/FailureText.h"

using Tools::FilePattern;

namespace {

std::string inputPath(const std::string& pattern, std::int32_t frame) {
    return FilePattern::parse(pattern, FilePattern::Use::Input).path(frame);
}

std::string failure(const std::string& pattern, FilePattern::Use use) {
    return failureOf([&] { FilePattern::parse(pattern, use); });
}

} // namespace

TEST(FilePattern, FillsPercentPatterns) {
    EXPECT_EQ(inputPath("/s/a.%04d.exr", 12), "/s/a.0012.exr");
    EXPECT_EQ(inputPath("a.%d.exr", 12), "a.12.exr");
    EXPECT_EQ(inputPath("a.%06d.exr", 12), "a.000012.exr");
}

TEST(FilePattern, ReadsOneHashAsFourDigitsAndARunAsItsLength) {
    EXPECT_EQ(inputPath("a.#.exr", 12), "a.0012.exr");
    EXPECT_EQ(inputPath("a.##.exr", 1), "a.01.exr");
    EXPECT_EQ(inputPath("a.####.exr", 12), "a.0012.exr");
    EXPECT_EQ(inputPath("a.######.exr", 12), "a.000012.exr");
}

TEST(FilePattern, ReadsARunOfAtSignsAsItsLength) {
    EXPECT_EQ(inputPath("a.@.exr", 12), "a.12.exr");
    EXPECT_EQ(inputPath("a.@@@@.exr", 12), "a.0012.exr");
}

TEST(FilePattern, ReadsDollarFForInput) {
    EXPECT_EQ(inputPath("a.$F4.exr", 12), "a.0012.exr");
    EXPECT_EQ(inputPath("a.$F.exr", 12), "a.12.exr");
}

TEST(FilePattern, RefusesDollarFForOutput) {
    EXPECT_EQ(failure("a.$F4.exr", FilePattern::Use::Output),
              "wrong use: File pattern \"a.$F4.exr\" is not usable: \"$F4\" works for input only; write \"%04d\" for "
              "output.");
}

TEST(FilePattern, KeepsWideNumbersWholeAndCountsTheSign) {
    EXPECT_EQ(inputPath("a.%04d.exr", 123456), "a.123456.exr");
    EXPECT_EQ(inputPath("a.%04d.exr", -5), "a.-005.exr");
}

TEST(FilePattern, TakesANameWithoutAPlaceAsOneFile) {
    const FilePattern pattern = FilePattern::parse("/s/100%.mov", FilePattern::Use::Input);
    EXPECT_FALSE(pattern.hasFrameNumber());
    EXPECT_EQ(pattern.path(7), "/s/100%.mov");
}

TEST(FilePattern, FindsTheNumberInANameWhateverItsCountOfDigits) {
    const FilePattern pattern = FilePattern::parse("/s/a.%04d.exr", FilePattern::Use::Input);
    EXPECT_EQ(pattern.frameNumber("a.0012.exr"), 12);
    EXPECT_EQ(pattern.frameNumber("a.12.exr"), 12);
    EXPECT_EQ(pattern.frameNumber("a.123456.exr"), 123456);
    EXPECT_EQ(pattern.frameNumber("a.-005.exr"), -5);
}

TEST(FilePattern, FindsNoNumberInAForeignName) {
    const FilePattern pattern = FilePattern::parse("/s/a.%04d.exr", FilePattern::Use::Input);
    for (const char* name : {"a..exr", "b.0012.exr", "a.0012.dpx", "a.12b.exr", "a.+12.exr", "a.-0.exr", "a.exr",
                             "a.99999999999.exr", ".a.0012.exr"}) {
        EXPECT_EQ(pattern.frameNumber(name), std::nullopt) << name;
    }
}

TEST(FilePattern, WritesItselfInPercentNotation) {
    EXPECT_EQ(FilePattern::parse("/s/a.####.exr", FilePattern::Use::Output).string(), "/s/a.%04d.exr");
    EXPECT_EQ(FilePattern::parse("a.@.exr", FilePattern::Use::Output).string(), "a.%d.exr");
    EXPECT_EQ(FilePattern::parse("a.exr", FilePattern::Use::Output).string(), "a.exr");
}

TEST(FilePattern, KnowsItsFolder) {
    EXPECT_EQ(FilePattern::parse("a.exr", FilePattern::Use::Output).folder(), ".");
    EXPECT_EQ(FilePattern::parse("/a.exr", FilePattern::Use::Output).folder(), "/");
    EXPECT_EQ(FilePattern::parse("x/y/a.exr", FilePattern::Use::Output).folder(), "x/y");
}

TEST(FilePattern, RefusesAPlaceInAFolder) {
    EXPECT_EQ(failure("/s/%04d/a.exr", FilePattern::Use::Input),
              "wrong use: File pattern \"/s/%04d/a.exr\" is not usable: the frame number may only appear in the file "
              "name, not "
              "in a folder name.");
}

TEST(FilePattern, RefusesTwoPlacesNamingBoth) {
    EXPECT_EQ(
        failure("a.##.%04d.exr", FilePattern::Use::Input),
        "wrong use: File pattern \"a.##.%04d.exr\" is not usable: it has two placeholders for the frame number, \"##\" "
        "and \"%04d\"; keep only one.");
}

TEST(FilePattern, RefusesPaddingWithBlanks) {
    EXPECT_EQ(failure("a.%4d.exr", FilePattern::Use::Output),
              "wrong use: File pattern \"a.%4d.exr\" is not usable: \"%4d\" pads with spaces; write \"%04d\".");
}

TEST(FilePattern, RefusesAbsurdWidths) {
    EXPECT_EQ(
        failure("a.%0999999999999d.exr", FilePattern::Use::Output),
        "wrong use: File pattern \"a.%0999999999999d.exr\" is not usable: \"%0999999999999d\" has too many digits.");
}

TEST(FilePattern, RefusesAMissingName) {
    EXPECT_EQ(failure("/s/", FilePattern::Use::Output),
              "wrong use: File pattern \"/s/\" is not usable: the file name is missing.");
    EXPECT_EQ(failure("", FilePattern::Use::Output),
              "wrong use: File pattern \"\" is not usable: the file name is missing.");
}
