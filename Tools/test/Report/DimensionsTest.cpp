#include "Report/Dimensions.h"

#include <gtest/gtest.h>

#include "Support/FailureText.h"

using Tools::MillimetreSize;
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
