#include "CorrectionFile/Parser/InvalidFormatException.h"

#include <gtest/gtest.h>

#include "Support/CommaLocale.h"

using CorrectionFile::InvalidFormatException;

TEST(InvalidFormatException, GivesTheReasonWithoutQuotes) {
    EXPECT_EQ(
        InvalidFormatException("Body start could not be found.").detailedDescription(),
        "Correction file could not be parsed due to an invalid format.\nReason: Body start could not be found.\n");
}

TEST(InvalidFormatException, GivesTheLineNumberAndTheLineUnderAnyLocale) {
    const Support::CommaLocale locale;
    EXPECT_EQ(InvalidFormatException(12345, "a;b").detailedDescription(),
              "Correction file could not be parsed due to an invalid format.\n"
              "Line Number: 12345\nLine Content: \"a;b\"\n");
}
