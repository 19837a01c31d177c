#include "Text/ToString.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

#include "Support/CommaLocale.h"

using Text::toString;

TEST(ToString, WritesSixSignificantDigits) {
    EXPECT_EQ(toString(25.0f), "25");
    EXPECT_EQ(toString(23.976f), "23.976");
    EXPECT_EQ(toString(1.0f / 3.0f), "0.333333");
    EXPECT_EQ(toString(1234567.0f), "1.23457e+06");
}

TEST(ToString, WritesWhatIsNoFiniteNumber) {
    EXPECT_EQ(toString(std::numeric_limits<float>::quiet_NaN()), "nan");
    EXPECT_EQ(toString(-std::numeric_limits<float>::infinity()), "-inf");
}

TEST(ToString, WritesWholeNumbersInFull) {
    EXPECT_EQ(toString(std::uint32_t{4294967295}), "4294967295");
    EXPECT_EQ(toString(std::int32_t{-2147483647}), "-2147483647");
}

TEST(ToString, WritesAlikeInEveryLocale) {
    const Support::CommaLocale locale;
    EXPECT_EQ(toString(1234.5f), "1234.5");
    EXPECT_EQ(toString(1234567), "1234567");
}
