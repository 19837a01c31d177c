#include "Timecode/Timecode.h"

#include <gtest/gtest.h>

#include <array>
#include <limits>

#include "Support/CommaLocale.h"

using Timecode::InvalidTimecodeException;
using Value = Timecode::Timecode;

namespace {

constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();

// The detailed description of what the operation throws, or "nothing".
template <typename Operation>
std::string thrownBy(Operation operation) {
    try {
        operation();
    } catch (const InvalidTimecodeException& exception) {
        return exception.detailedDescription();
    }
    return "nothing";
}

std::string thrownByParsing(const char* text, float rate) {
    return thrownBy([&] { Value(text, rate); });
}

std::string formatMessage(const std::string& text, const std::string& rate) {
    return "Timecode object could not be constructed due to invalid format.\nTimecode String: \"" + text +
           "\"\nFrames per Second: \"" + rate + "\"\n";
}

std::array<std::uint32_t, 4> counters(const Value& timecode) {
    return {timecode.hours, timecode.minutes, timecode.seconds, timecode.frames};
}

using Counters = std::array<std::uint32_t, 4>;

} // namespace

TEST(Timecode, ParsesHoursMinutesSecondsAndFramesAndKeepsTheRate) {
    const Value timecode("01:02:03:04", 25.0f);
    EXPECT_EQ(counters(timecode), (Counters{1, 2, 3, 4}));
    EXPECT_EQ(timecode.framesPerSecond, 25.0f);
}

TEST(Timecode, IsWrittenWithAndWithoutItsRate) {
    const Value timecode("01:00:00:00", 25.0f);
    EXPECT_EQ(timecode.string(true), "01:00:00:00@25");
    EXPECT_EQ(timecode.string(false), "01:00:00:00");
}

TEST(Timecode, WritesEachCounterWithAtLeastTwoDigits) {
    EXPECT_EQ(Value("1:2:3:4", 25.0f).string(false), "01:02:03:04");
    EXPECT_EQ(Value("100:02:03:104", 120.0f).string(false), "100:02:03:104");
}

TEST(Timecode, WritesAFractionalRateWithTwoDecimals) {
    EXPECT_EQ(Value("00:00:00:00", 23.976f).string(true), "00:00:00:00@23.98");
    EXPECT_EQ(Value("00:00:00:00", 29.97f).string(true), "00:00:00:00@29.97");
}

TEST(Timecode, WritesANotANumberRateAsSuch) {
    Value timecode("00:00:00:00", 0.0f);
    timecode.framesPerSecond = notANumber;
    EXPECT_EQ(timecode.string(true), "00:00:00:00@nan");
}

TEST(Timecode, IsReadAndWrittenTheSameUnderALocaleWithADecimalCommaAndDigitGroups) {
    const Support::CommaLocale locale;
    EXPECT_EQ(Value("1000:00:00:00", 23.976f).string(true), "1000:00:00:00@23.98");
    EXPECT_EQ(thrownByParsing("1.000:00:00:00", 25.0f), formatMessage("1.000:00:00:00", "25"));
}

TEST(Timecode, NeedsTheFramesBelowAKnownRate) {
    EXPECT_EQ(Value("00:00:00:24", 25.0f).frames, 24u);
    EXPECT_EQ(thrownByParsing("00:00:00:25", 25.0f), formatMessage("00:00:00:25", "25"));
}

TEST(Timecode, AcceptsTheLastFrameOfAFractionalRate) {
    EXPECT_EQ(Value("00:00:00:23", 23.976f).frames, 23u);
    EXPECT_EQ(thrownByParsing("00:00:00:24", 23.976f), formatMessage("00:00:00:24", "23.976"));
}

TEST(Timecode, AcceptsAnyFramesAtAnUnknownRate) { EXPECT_EQ(Value("00:00:00:99", 0.0f).frames, 99u); }

TEST(Timecode, DoesNotLimitHours) { EXPECT_EQ(Value("99:00:00:00", 25.0f).hours, 99u); }

TEST(Timecode, AcceptsOneSignAndLeadingZerosInAPiece) {
    EXPECT_EQ(counters(Value("+1:002:+03:0004", 25.0f)), (Counters{1, 2, 3, 4}));
    EXPECT_EQ(Value("-1:00:00:00", 25.0f).hours, 4294967295u);
}

TEST(TimecodeDeathTest, StopsOnANullText) { EXPECT_DEATH(Value(nullptr, 25.0f), "Assertion failed: _timecode\n"); }

class MalformedTimecode : public testing::TestWithParam<const char*> {};

TEST_P(MalformedTimecode, IsReportedWithItsTextAndRate) {
    EXPECT_EQ(thrownByParsing(GetParam(), 25.0f), formatMessage(GetParam(), "25"));
}

INSTANTIATE_TEST_SUITE_P(Timecode, MalformedTimecode,
                         testing::Values("", ":", ":::", "01:00:00", "01:00:00:00:00", "01;00;00;00", "01:00:00;00",
                                         "01:00:00:", ":00:00:00", "01::00:00", "01:00: 0:00", " 01:00:00:00",
                                         "01:00:00:00 ", "00:60:00:00", "00:00:60:00", "01:-1:00:00", "01:00:00:0x1",
                                         "01:00:00:1.0", "aa:00:00:00", "4294967296:00:00:00", "01:00:00:+-1"));

class UnusableRate : public testing::TestWithParam<float> {};

TEST_P(UnusableRate, MakesParsingFail) { EXPECT_NE(thrownByParsing("00:00:00:00", GetParam()), "nothing"); }

INSTANTIATE_TEST_SUITE_P(Timecode, UnusableRate, testing::Values(-1.0f, -25.0f, -infinity, notANumber));

TEST(Timecode, CountsAFractionalRateRoundedUpWhenAdvanced) {
    EXPECT_EQ((Value("00:00:00:23", 23.976f) + 1u).string(true), "00:00:01:00@23.98");
    EXPECT_EQ((Value("00:00:00:29", 29.97f) + 1u).string(false), "00:00:01:00");
    EXPECT_EQ((Value("00:00:00:12", 12.25f) + 1u).string(false), "00:00:01:00");
}

TEST(Timecode, GrowsPastTwentyFourHoursWhenAdvanced) {
    EXPECT_EQ((Value("23:59:59:24", 25.0f) + 1u).string(false), "24:00:00:00");
}

TEST(Timecode, CarriesIntoEveryCounterWhenAdvanced) {
    EXPECT_EQ((Value("00:00:00:00", 24.0f) + (24u * 3661u + 5u)).string(false), "01:01:01:05");
}

TEST(Timecode, IsItselfAfterAdvancingInPlace) {
    Value timecode("00:00:00:00", 25.0f);
    EXPECT_EQ(&(timecode += 26u), &timecode);
    EXPECT_EQ(timecode.string(true), "00:00:01:01@25");
}

TEST(Timecode, LeavesTheOperandAloneWhenACopyIsAdvanced) {
    const Value timecode("00:00:00:00", 25.0f);
    EXPECT_EQ((timecode + 3u).string(true), "00:00:00:03@25");
    EXPECT_EQ(timecode.string(true), "00:00:00:00@25");
}

TEST(Timecode, WrapsTheTotalOfFramesSilently) {
    EXPECT_EQ((Value("00:00:00:01", 25.0f) + 4294967295u).string(false), "00:00:00:00");
}

class RateThatCannotAdvance : public testing::TestWithParam<std::pair<float, const char*>> {};

TEST_P(RateThatCannotAdvance, IsReportedWithTheFormatMessageAndLeavesTheTimecodeUnchanged) {
    Value timecode("01:02:03:04", 0.0f);
    timecode.framesPerSecond = GetParam().first;
    EXPECT_EQ(thrownBy([&] { timecode += 1u; }), formatMessage("01:02:03:04", GetParam().second));
    EXPECT_EQ(timecode.string(false), "01:02:03:04");
}

INSTANTIATE_TEST_SUITE_P(Timecode, RateThatCannotAdvance,
                         testing::Values(std::pair(0.0f, "0"), std::pair(-0.5f, "-0.5"), std::pair(-25.0f, "-25"),
                                         std::pair(notANumber, "nan"), std::pair(infinity, "inf"),
                                         std::pair(-infinity, "-inf"), std::pair(3e38f, "3e+38"),
                                         std::pair(268435456.0f, "2.68435e+08"), std::pair(1193047.0f, "1.19305e+06")));

TEST(Timecode, AdvancesAtTheHighestRateWhoseHourFitsThirtyTwoBits) {
    EXPECT_EQ((Value("00:00:00:00", 1193046.0f) + 1193046u).string(false), "00:00:01:00");
}

TEST(Timecode, SubtractsToTheNumberOfFramesBetween) {
    EXPECT_EQ(Value("01:00:00:10", 25.0f) - Value("01:00:00:00", 25.0f), 10u);
    EXPECT_EQ(Value("02:01:01:00", 23.976f) - Value("01:00:00:00", 23.976f), 24u * 3661u);
    EXPECT_EQ(Value("01:00:00:00", 25.0f) - Value("01:00:00:00", 25.0f), 0u);
}

TEST(Timecode, CannotSubtractALaterTimecode) {
    EXPECT_EQ(thrownBy([] { Value("01:00:00:00", 25.0f) - Value("01:00:00:10", 25.0f); }),
              "Timecode subtraction could not be performed.\n"
              "Lhs Timecode: \"01:00:00:00@25\"\nRhs Timecode: \"01:00:00:10@25\"\n");
}

TEST(Timecode, CountsALeftOperandOfUnknownRateAtTheRightOnesRate) {
    EXPECT_EQ(Value("01:00:01:00", 0.0f) - Value("01:00:00:00", 25.0f), 25u);
}

class RatesThatCannotBeSubtracted : public testing::TestWithParam<std::pair<float, float>> {};

TEST_P(RatesThatCannotBeSubtracted, AreReported) {
    Value lhs("01:00:00:00", 0.0f);
    Value rhs("01:00:00:00", 0.0f);
    lhs.framesPerSecond = GetParam().first;
    rhs.framesPerSecond = GetParam().second;
    EXPECT_EQ(thrownBy([&] { lhs - rhs; }), "Timecode subtraction could not be performed.\nLhs Timecode: \"" +
                                                lhs.string(true) + "\"\nRhs Timecode: \"" + rhs.string(true) + "\"\n");
}

INSTANTIATE_TEST_SUITE_P(Timecode, RatesThatCannotBeSubtracted,
                         testing::Values(std::pair(25.0f, 0.0f), std::pair(0.0f, 0.0f), std::pair(25.0f, 24.0f),
                                         std::pair(-25.0f, 25.0f), std::pair(-25.0f, -25.0f),
                                         std::pair(infinity, infinity), std::pair(0.0f, infinity),
                                         std::pair(3e38f, 3e38f), std::pair(notANumber, notANumber),
                                         std::pair(notANumber, 25.0f), std::pair(25.0f, notANumber)));

TEST(Timecode, CannotBeComparedAtTwoKnownRatesThatDiffer) {
    const std::string message =
        "Timecode comparison could not be performed.\n"
        "Lhs Timecode: \"01:00:00:00@25\"\nRhs Timecode: \"01:00:00:00@24\"\n";
    const Value lhs("01:00:00:00", 25.0f);
    const Value rhs("01:00:00:00", 24.0f);
    EXPECT_EQ(thrownBy([&] { static_cast<void>(lhs == rhs); }), message);
    EXPECT_EQ(thrownBy([&] { static_cast<void>(lhs < rhs); }), message);
    EXPECT_EQ(thrownBy([&] { Value::checkIfTimecodesAreComparableAndThrowIfNeeded(lhs, rhs); }), message);
}

TEST(Timecode, ComparesWhenOneRateOrBothAreUnknown) {
    EXPECT_TRUE(Value("01:00:00:00", 25.0f) == Value("01:00:00:00", 0.0f));
    EXPECT_TRUE(Value("01:00:00:00", 0.0f) == Value("01:00:00:00", 25.0f));
    EXPECT_TRUE(Value("01:00:00:00", 0.0f) == Value("01:00:00:00", 0.0f));
}

TEST(Timecode, ComparesAKnownRateWithANegativeOneButNotTwoNegativeOnes) {
    Value lhs("01:00:00:00", 25.0f);
    Value rhs("01:00:00:00", 0.0f);
    rhs.framesPerSecond = -1.0f;
    EXPECT_TRUE(lhs == rhs);
    lhs.framesPerSecond = -2.0f;
    EXPECT_NE(thrownBy([&] { static_cast<void>(lhs == rhs); }), "nothing");
}

TEST(Timecode, IsEqualOnlyIfAllFourCountersAre) {
    const Value timecode("01:02:03:04", 25.0f);
    EXPECT_TRUE(timecode == Value("01:02:03:04", 25.0f));
    for (const char* other : {"02:02:03:04", "01:03:03:04", "01:02:04:04", "01:02:03:05"}) {
        EXPECT_FALSE(timecode == Value(other, 25.0f)) << other;
    }
}

TEST(Timecode, IsOrderedByWholeSecondsFirstWhateverTheRates) {
    EXPECT_FALSE(Value("00:00:01:00", 25.0f) < Value("00:00:00:30", 0.0f));
    EXPECT_TRUE(Value("00:00:00:30", 0.0f) < Value("00:00:01:00", 25.0f));
    EXPECT_TRUE(Value("00:59:59:00", 25.0f) < Value("01:00:00:00", 25.0f));
}

TEST(Timecode, IsOrderedByFramesWithinASecond) {
    EXPECT_TRUE(Value("00:00:01:03", 25.0f) < Value("00:00:01:04", 25.0f));
    EXPECT_FALSE(Value("00:00:01:04", 25.0f) < Value("00:00:01:04", 25.0f));
    EXPECT_FALSE(Value("00:00:01:05", 25.0f) < Value("00:00:01:04", 25.0f));
}
