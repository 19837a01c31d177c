#include "Exception/Exception.h"

#include <gtest/gtest.h>

#include "Exception/DetailLines.h"

TEST(Exception, WithoutDetailsDescribesItselfByTheBriefTextAndOneLineFeed) {
    EXPECT_EQ(Exception("Something failed.").detailedDescription(), "Something failed.\n");
}

TEST(Exception, WithDetailsDescribesItselfByBriefTextAndDetailsEachEndedByALineFeed) {
    EXPECT_EQ(Exception("Something failed.", "A: 1\nB: 2").detailedDescription(), "Something failed.\nA: 1\nB: 2\n");
}

TEST(Exception, KeepsTheBriefTextAsItsWhatText) {
    EXPECT_STREQ(Exception("Something failed.", "A: 1").what(), "Something failed.");
}

TEST(DetailLines, QuotesTextsWritesNumbersBareAndEndsWithoutALineFeed) {
    EXPECT_EQ(DetailLines().text("File Path", "/a b.olcf").number("Frame Number", 7u).string(),
              "File Path: \"/a b.olcf\"\nFrame Number: 7");
}
