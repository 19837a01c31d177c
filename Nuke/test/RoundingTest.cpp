#include "Rounding.h"

#include <limits>
#include <string>

#include <gtest/gtest.h>

namespace {

std::string errorOf(float value) {
    try {
        roundToInteger(value);
    } catch (const boost::math::rounding_error& error) {
        return error.what();
    }
    return "";
}

} // namespace

TEST(Rounding, GoesHalfAwayFromZero) {
    EXPECT_EQ(roundToInteger(0.5f), 1);
    EXPECT_EQ(roundToInteger(-0.5f), -1);
    EXPECT_EQ(roundToInteger(2.5f), 3);
    EXPECT_EQ(roundToInteger(-2.5f), -3);
    EXPECT_EQ(roundToInteger(2.4f), 2);
}

TEST(Rounding, RefusesInfinityWithItsText) {
    EXPECT_EQ(errorOf(std::numeric_limits<float>::infinity()),
              "Error in function boost::math::round<float>(float): Value inf can not be represented in the target "
              "integer type.");
}

TEST(Rounding, RefusesWhatIsNotANumber) { EXPECT_NE(errorOf(std::numeric_limits<float>::quiet_NaN()), ""); }

TEST(Rounding, RefusesWhatDoesNotFitAnInteger) {
    EXPECT_NE(errorOf(3e9f), "");
    EXPECT_NE(errorOf(2147483648.0f), "");
    EXPECT_EQ(errorOf(-2147483648.0f), "");
}

TEST(Rounding, KeepsTwoDecimals) {
    EXPECT_EQ(roundToTwoDecimals(43.26661682128906), 43.27);
    EXPECT_EQ(roundToTwoDecimals(12.65625f), 12.66f);
    EXPECT_EQ(roundToTwoDecimals(0.125), 0.13) << "half away from zero";
}
