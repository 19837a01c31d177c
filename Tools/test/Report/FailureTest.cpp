#include "Report/Failure.h"

#include <gtest/gtest.h>

using Tools::Failure;

TEST(Failure, TellsItsBriefTextWhereThereAreNoDetails) {
    const Failure failure(Failure::Kind::WrongUse, "The clip is missing.\n");
    EXPECT_EQ(failure.text(), "The clip is missing.");
}

TEST(Failure, TellsItsDetailsWhichBeginWithTheBriefText) {
    const Failure failure(Failure::Kind::Correction, "No record.", "No record.\n  Frame Number: 7\n");
    EXPECT_STREQ(failure.what(), "No record.");
    EXPECT_EQ(failure.text(), "No record.\n  Frame Number: 7");
}

TEST(Failure, TellsTheCauseFirst) {
    const Failure failure(Failure::Kind::Correction, "Header of the metadata is not available. Line 3 is empty.");
    EXPECT_EQ(failure.text(), "Line 3 is empty.");
}
