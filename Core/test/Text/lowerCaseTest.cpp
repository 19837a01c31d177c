#include "Text/lowerCase.h"

#include <gtest/gtest.h>

using Text::lowerCase;

TEST(lowerCase, ChangesTheLettersAToZOnly) {
    EXPECT_EQ(lowerCase("@AMZ[`az{ 0-9_."), "@amz[`az{ 0-9_.");
    EXPECT_EQ(lowerCase("\xc3\x84"), "\xc3\x84");
}

TEST(lowerCase, KeepsZeroBytesAndEmptyTexts) {
    EXPECT_EQ(lowerCase(std::string_view("A\0B", 3)), std::string("a\0b", 3));
    EXPECT_EQ(lowerCase(""), "");
}
