#include "Report/PrintableText.h"

#include <gtest/gtest.h>

using Tools::counted;
using Tools::printableText;
using Tools::withoutLastLineFeeds;

TEST(PrintableText, KeepsTextOfAnyLanguageInLines) {
    EXPECT_EQ(printableText("a~ \"ä€😀\"\n b\n"), "a~ \"ä€😀\"\n b\n");
    EXPECT_EQ(printableText(""), "");
}

TEST(PrintableText, KeepsBytesThatAreNoText) { EXPECT_EQ(printableText("\xFF\xC2"), "\xFF\xC2"); }

TEST(PrintableText, ShowsControlCharactersByTheirBytes) {
    EXPECT_EQ(printableText("\x1B[31mred\x07\t\r\x7F"), "\\x1B[31mred\\x07\\x09\\x0D\\x7F");
    EXPECT_EQ(printableText(std::string_view("a\0b", 3)), "a\\x00b");
}

TEST(PrintableText, ShowsTheControlCharactersOfEightBitsByTheirBytes) {
    EXPECT_EQ(printableText("\xC2\x9B"
                            "31m\xC2\x80\xC2\xA0"),
              "\\xC2\\x9B31m\\xC2\\x80\xC2\xA0");
}

TEST(CountedText, NamesOneThingAndAnyOtherNumberOfThem) {
    EXPECT_EQ(counted(0, "frame"), "0 frames");
    EXPECT_EQ(counted(1, "frame"), "1 frame");
    EXPECT_EQ(counted(2, "frame"), "2 frames");
}

TEST(TextWithoutLastLineFeeds, KeepsThoseInside) {
    EXPECT_EQ(withoutLastLineFeeds("a\n\nb\n\n"), "a\n\nb");
    EXPECT_EQ(withoutLastLineFeeds("\n"), "");
    EXPECT_EQ(withoutLastLineFeeds(""), "");
}
