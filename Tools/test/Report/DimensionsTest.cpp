#include "Report/Dimensions.h"

#include <gtest/gtest.h>

#include "Support/FailureText.h"

using Tools::memorySizeText;
using Tools::MillimetreSize;
using Tools::parseMemorySize;
using Tools::parseMillimetreSize;
using Tools::parsePixelSize;
using Tools::PixelSize;

TEST(Dimensions, ReadPixels) {
    EXPECT_EQ(parsePixelSize("--size", "1920x1080"), (PixelSize{1920, 1080}));
    EXPECT_EQ(parsePixelSize("--size", "1X65536"), (PixelSize{1, 65536}));
}

TEST(Dimensions, ReadMillimetres) {
    EXPECT_EQ(parseMillimetreSize("--image-area", "23.76x13.37"), (MillimetreSize{23.76f, 13.37f}));
}

TEST(Dimensions, RefuseEverythingElseNamingOptionAndText) {
    for (const char* text :
         {"", "1920", "1920x", "x1080", "1920x1080p", "0x5", "-1x5", "65537x5", "1.5x5", "1920 x 1080"}) {
        EXPECT_EQ(failureOf([&] { parsePixelSize("--size", text); }),
                  std::string("wrong use: --size \"") + text + "\" is not a size in pixels, such as 1920x1080.");
    }
    for (const char* text : {"", "24", "0x5", "nanx5", "infx5", "24x-1", "24x1001", "24,5x13"}) {
        EXPECT_EQ(
            failureOf([&] { parseMillimetreSize("--image-area", text); }),
            std::string("wrong use: --image-area \"") + text + "\" is not a size in millimetres, such as 23.76x13.37.");
    }
}

TEST(Dimensions, HalveTheDiagonalFromCornerToCorner) { EXPECT_EQ(Tools::halfDiagonal(600, 800), 500.0); }

TEST(MemorySize, ReadsBytesAndUnitsOf1024) {
    EXPECT_EQ(parseMemorySize("65536"), 65536u);
    EXPECT_EQ(parseMemorySize("64k"), 65536u);
    EXPECT_EQ(parseMemorySize("512M"), 536870912u);
    EXPECT_EQ(parseMemorySize("8G"), 8589934592u);
    EXPECT_EQ(parseMemorySize("2T"), 2199023255552u);
}

TEST(MemorySize, ReadsFractionsBlanksAndLongUnits) {
    EXPECT_EQ(parseMemorySize("1.5 GiB"), 1610612736u);
    EXPECT_EQ(parseMemorySize("1gb"), 1073741824u);
    EXPECT_EQ(parseMemorySize("100 B"), 100u);
}

TEST(MemorySize, RefusesEverythingElseNamingTheText) {
    const auto failure = [](const std::string& text) { return failureOf([&] { parseMemorySize(text); }); };
    const std::string begin = "wrong use: Memory size \"";
    const std::string examples = " Examples: 8G, 512M, 1.5G.";
    EXPECT_EQ(failure(""), begin + "\" is not understood: it does not begin with a number." + examples);
    EXPECT_EQ(failure("G"), begin + "G\" is not understood: it does not begin with a number." + examples);
    EXPECT_EQ(failure("nan"), begin + "nan\" is not understood: it does not begin with a number." + examples);
    EXPECT_EQ(failure("8X"), begin + "8X\" is not understood: its unit is not K, M, G or T." + examples);
    EXPECT_EQ(failure("8G!"), begin + "8G!\" is not understood: its unit is not K, M, G or T." + examples);
    EXPECT_EQ(failure("0"), begin + "0\" is not understood: it must be more than 0." + examples);
    EXPECT_EQ(failure("-1G"), begin + "-1G\" is not understood: it must be more than 0." + examples);
    EXPECT_EQ(failure("99999999999T"), begin + "99999999999T\" is not understood: it is too large." + examples);
}

TEST(MemorySize, IsWrittenForPeople) {
    EXPECT_EQ(memorySizeText(100), "100 bytes");
    EXPECT_EQ(memorySizeText(536870912), "512 MiB");
    EXPECT_EQ(memorySizeText(1610612736), "1.5 GiB");
}
