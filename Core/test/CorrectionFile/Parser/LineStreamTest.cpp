#include "CorrectionFile/Parser/LineStream.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

namespace {

std::vector<std::string> linesOf(std::string_view text) {
    CorrectionFile::LineStream stream(text);
    std::vector<std::string> lines;
    for (std::string_view line; CorrectionFile::getLine(stream, line);) lines.emplace_back(line);
    return lines;
}

using testing::ElementsAre;

} // namespace

TEST(LineStream, HoldsNoLineInAnEmptyText) { EXPECT_THAT(linesOf(""), ElementsAre()); }

TEST(LineStream, EndsALineAtALineFeedOrAtTheEndOfTheText) {
    EXPECT_THAT(linesOf("a\nb"), ElementsAre("a", "b"));
    EXPECT_THAT(linesOf("a\nb\n"), ElementsAre("a", "b"));
}

TEST(LineStream, KeepsEmptyLines) { EXPECT_THAT(linesOf("\n\na\n\n"), ElementsAre("", "", "a", "")); }

TEST(LineStream, RemovesCarriageReturnsWhereverTheyStand) {
    EXPECT_THAT(linesOf("a\r\n\rb\r\rc\r\r\n\r\n\r"), ElementsAre("a", "bc", "", ""));
}

TEST(LineStream, KeepsZeroBytes) {
    EXPECT_THAT(linesOf(std::string_view("a\0b\n", 4)), ElementsAre(std::string("a\0b", 3)));
}

TEST(LineStream, CountsLinesFromOneAndNotBeyondTheLast) {
    CorrectionFile::LineStream stream("a\n\nb");
    std::string_view line;
    EXPECT_EQ(stream.lineNumber, 0u);
    while (CorrectionFile::getLine(stream, line)) {
    }
    EXPECT_EQ(stream.lineNumber, 3u);
    EXPECT_FALSE(CorrectionFile::getLine(stream, line));
    EXPECT_EQ(stream.lineNumber, 3u);
    EXPECT_EQ(line, "b");
}
