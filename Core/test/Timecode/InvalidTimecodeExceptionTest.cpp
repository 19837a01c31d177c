
#include <gtest/gtest.h>

#include "Support/CommaLocale.h"
#include "Timecode/Timecode.h"

using Timecode::InvalidTimecodeException;

TEST(InvalidTimecodeException, NamesTheTextAndTheRateBothQuoted) {
    EXPECT_EQ(InvalidTimecodeException("Failed.", "01:00", 25.0f).detailedDescription(),
              "Failed.\nTimecode String: \"01:00\"\nFrames per Second: \"25\"\n");
}

TEST(InvalidTimecodeException, WritesAFractionalRateWithSixSignificantDigitsUnderAnyLocale) {
    const Support::CommaLocale locale;
    EXPECT_EQ(InvalidTimecodeException("Failed.", "01:00", 23.976f).detailedDescription(),
              "Failed.\nTimecode String: \"01:00\"\nFrames per Second: \"23.976\"\n");
}

TEST(InvalidTimecodeException, NamesBothOperands) {
    EXPECT_EQ(InvalidTimecodeException("Failed.", "01:00:00:00@25", "02:00:00:00@24").detailedDescription(),
              "Failed.\nLhs Timecode: \"01:00:00:00@25\"\nRhs Timecode: \"02:00:00:00@24\"\n");
}
