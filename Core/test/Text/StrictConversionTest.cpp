#include "Text/StrictConversion.h"

#include <gtest/gtest.h>

#include <boost/lexical_cast.hpp>
#include <cmath>
#include <random>
#include <string>

#include "Support/CommaLocale.h"

namespace {

template <typename Number>
void expectSameAsLexicalCast(const std::string& text) {
    Number expected{};
    const bool converts = boost::conversion::try_lexical_convert(text, expected);
    Number number{};
    ASSERT_EQ(Text::convertStrictly(text, number), converts) << '"' << text << '"';
    if (!converts) return;
    if (expected != expected) {
        EXPECT_NE(number, number) << text;
    } else {
        EXPECT_EQ(number, expected) << text;
    }
}

class StrictConversion : public testing::TestWithParam<std::string> {};

} // namespace

TEST_P(StrictConversion, AcceptsAndRejectsWhatALexicalCastDoes) {
    expectSameAsLexicalCast<float>(GetParam());
    expectSameAsLexicalCast<std::uint16_t>(GetParam());
    expectSameAsLexicalCast<std::uint32_t>(GetParam());
    expectSameAsLexicalCast<std::int32_t>(GetParam());
    expectSameAsLexicalCast<bool>(GetParam());
}

INSTANTIATE_TEST_SUITE_P(
    Spellings, StrictConversion,
    testing::Values("", " ", "0", "1", "00", "01", "007", "+1", "-1", "-0", "+-1", "-+1", "--1", "+", "-", "1 ", " 1",
                    "1\n", std::string("1\0", 2), "abc", "1a", "true", "1,5", "1.5", "1.000", ".5", "5.", ".", "-.5",
                    "+.5", "1e3", "1E3", "1e+3", "1e-3", "1e", "1e+", "1e-", "1.5.2", "0x10", "0x1p3", "1e39", "-1e39",
                    "1e-50", "-1e-50", "1e-40", "3.4028235e38", "3.4028236e38", "65535", "65536", "-65535", "-65536",
                    "2147483647", "2147483648", "-2147483648", "-2147483649", "4294967295", "4294967296", "-4294967295",
                    "00000000000000000000005", "nan", "NaN", "-nan", "+NAN", "nan(1)", "nan(", "nan()", "nanx", "inf",
                    "-inf", "+Inf", "infinity", "Infinity", "-INFINITY", "infinit", "infx", "n", "in", "1n"));

TEST(StrictConversion, RoundsRandomDecimalsLikeALexicalCast) {
    std::mt19937 random(1);
    const std::string letters = "0123456789.+-e";
    for (int i = 0; i < 20000; ++i) {
        std::string text;
        const auto length = random() % 12;
        for (unsigned j = 0; j < length; ++j) text += letters[random() % letters.size()];
        expectSameAsLexicalCast<float>(text);
        expectSameAsLexicalCast<std::int32_t>(text);
        if (HasFatalFailure()) return;
    }
}

TEST(StrictConversion, LeavesTheNumberUntouchedWhenTheTextDoesNotConvert) {
    float number = 7.0f;
    EXPECT_FALSE(Text::convertStrictly("1e39", number));
    EXPECT_FALSE(Text::convertStrictly("nanx", number));
    EXPECT_FALSE(Text::convertStrictly("1.5x", number));
    EXPECT_EQ(number, 7.0f);
    std::uint32_t count = 7;
    EXPECT_FALSE(Text::convertStrictly("12x", count));
    EXPECT_EQ(count, 7u);
}

TEST(StrictConversion, ReadsADecimalPointUnderALocaleWithADecimalComma) {
    const Support::CommaLocale locale;
    for (const char* text : {"0.5", ".5", "+0.5", "5e-1"}) {
        float number = 0.0f;
        EXPECT_TRUE(Text::convertStrictly(text, number)) << text;
        EXPECT_EQ(number, 0.5f) << text;
    }
    float number = 0.0f;
    EXPECT_FALSE(Text::convertStrictly("0,5", number));
}

TEST(StrictConversion, RefusesDigitGroupsUnderALocaleThatHasThem) {
    const Support::CommaLocale locale;
    std::uint32_t count = 0;
    float number = 0.0f;
    EXPECT_FALSE(Text::convertStrictly("1.000", count));
    EXPECT_FALSE(Text::convertStrictly("1.000.000", number));
}
