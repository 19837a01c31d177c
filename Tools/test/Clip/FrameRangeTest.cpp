#include "Clip/FrameRange.h"

#include <gtest/gtest.h>

#include "Support/FailureText.h"

using Tools::FrameRange;
using Frames = std::vector<std::int32_t>;

namespace {

Frames parsed(const std::string& text) { return FrameRange::parse(text).frames(); }

std::string failure(const std::string& text) {
    return failureOf([&] { FrameRange::parse(text); });
}

constexpr const char* examples = " Examples: 1001, 1001-1100, 1001-1100x2, 1001-1010,1020.";

} // namespace

TEST(FrameRange, ReadsOneFrame) { EXPECT_EQ(parsed("1001"), (Frames{1001})); }

TEST(FrameRange, ReadsARangeWithBothEnds) { EXPECT_EQ(parsed("8-11"), (Frames{8, 9, 10, 11})); }

TEST(FrameRange, ReadsAStep) { EXPECT_EQ(parsed("1-10x3"), (Frames{1, 4, 7, 10})); }

TEST(FrameRange, StopsBeforeAnEndThatTheStepDoesNotMeet) { EXPECT_EQ(parsed("1-6x2"), (Frames{1, 3, 5})); }

TEST(FrameRange, ReadsNegativeNumbers) {
    EXPECT_EQ(parsed("-2-1"), (Frames{-2, -1, 0, 1}));
    EXPECT_EQ(parsed("-10--8"), (Frames{-10, -9, -8}));
    EXPECT_EQ(parsed("-5"), (Frames{-5}));
}

TEST(FrameRange, CountsDownWhenTheEndComesFirst) {
    EXPECT_EQ(parsed("3-1"), (Frames{3, 2, 1}));
    EXPECT_EQ(parsed("9-1x4"), (Frames{9, 5, 1}));
    EXPECT_EQ(parsed("9-1x-4"), (Frames{9, 5, 1}));
}

TEST(FrameRange, KeepsTheOrderOfAListAndDropsRepeats) {
    EXPECT_EQ(parsed("10,1-3,2,12-10x2"), (Frames{10, 1, 2, 3, 12}));
}

TEST(FrameRange, TakesBlanksAsSeparators) { EXPECT_EQ(parsed(" 1 3-4, 9 "), (Frames{1, 3, 4, 9})); }

TEST(FrameRange, ReadsTheLargestAndSmallestNumbers) {
    EXPECT_EQ(parsed("2147483646-2147483647"), (Frames{2147483646, 2147483647}));
    EXPECT_EQ(parsed("-2147483648"), (Frames{-2147483647 - 1}));
}

TEST(FrameRange, RefusesTheColonNamingBothReadings) {
    EXPECT_EQ(failure("1-10:5"),
              "wrong use: Frame range \"1-10:5\" uses \":\", which some programs read as a step (1-10:2 is 1, 3, 5 …) "
              "and others as "
              "a staggered order (all of 1-10, the coarse ones first). Write a step as 1-10x2.");
}

TEST(FrameRange, RefusesMoreThanAMillionFramesBeforeTheyTakeMemory) {
    EXPECT_EQ(failure("1-1000001"),
              "wrong use: Frame range \"1-1000001\" has more than 1000000 frames; split the job.");
    EXPECT_EQ(failure("1-1000000000"),
              "wrong use: Frame range \"1-1000000000\" has more than 1000000 frames; split the job.");
    EXPECT_EQ(failure("2147483647--2147483648"),
              "wrong use: Frame range \"2147483647--2147483648\" has more than 1000000 frames; split the job.");
    EXPECT_EQ(failureOf([] { FrameRange::fromStartToEnd(-2147483647 - 1, 2147483647); }),
              "wrong use: Frame range \"-2147483648-2147483647x1\" has more than 1000000 frames; split the job.");
    EXPECT_EQ(parsed("1-1000000").size(), 1000000u);
}

TEST(FrameRange, TakesAStepThatLeavesFewOfManyFrames) {
    EXPECT_EQ(parsed("-2147483648-2147483647x2147483647"), (Frames{-2147483647 - 1, -1, 2147483646}));
}

TEST(FrameRange, CountsRepeatedFramesTowardsTheLimit) {
    EXPECT_EQ(failure("1-600000,1-600000"),
              "wrong use: Frame range \"1-600000,1-600000\" has more than 1000000 frames; split the job.");
}

namespace {

struct Defect {
    const char* text;
    std::string reason;
};

// Names the case in lists of tests.
std::ostream& operator<<(std::ostream& stream, const Defect& defect) { return stream << '"' << defect.text << '"'; }

class FrameRangeDefect : public testing::TestWithParam<Defect> {};

} // namespace

TEST_P(FrameRangeDefect, IsReportedWithTheOffendingText) {
    EXPECT_EQ(failure(GetParam().text), "wrong use: Frame range " + GetParam().reason + examples);
}

INSTANTIATE_TEST_SUITE_P(
    All, FrameRangeDefect,
    testing::Values(Defect{"", "\"\" is not understood: it is empty."},
                    Defect{"  ", "\"  \" is not understood: there is nothing between two commas."},
                    Defect{"1,,2", "\"1,,2\" is not understood: there is nothing between two commas."},
                    Defect{"1,", "\"1,\" is not understood: there is nothing between two commas."},
                    Defect{"a", "\"a\" is not understood: \"a\" is not a number."},
                    Defect{"5,1-x2", "\"1-x2\" is not understood: \"x2\" is not a number."},
                    Defect{"1-", "\"1-\" is not understood: a number is missing at its end."},
                    Defect{"1-5y2", "\"1-5y2\" is not understood: \"y2\" is not expected there."},
                    Defect{"1..5", "\"1..5\" is not understood: \"..5\" is not expected there."},
                    Defect{"1-5x2x", "\"1-5x2x\" is not understood: \"x\" is not expected there."},
                    Defect{"1-1e9x", "\"1-1e9x\" is not understood: \"e9x\" is not expected there."},
                    Defect{"1-9x", "\"1-9x\" is not understood: a number is missing at its end."},
                    Defect{"1x2", "\"1x2\" is not understood: \"x2\" is not expected there."},
                    Defect{"1-5x0", "\"1-5x0\" is not understood: a step of 0 never reaches the end."},
                    Defect{"1-5x-1", "\"1-5x-1\" is not understood: a negative step moves away from the end."},
                    Defect{"99999999999",
                           "\"99999999999\" is not understood: a number in \"99999999999\" is too large."}));

TEST(FrameRange, IsMadeFromStartEndAndStep) {
    EXPECT_EQ(FrameRange::fromStartToEnd(1001, 1010, 3).frames(), (Frames{1001, 1004, 1007, 1010}));
    EXPECT_EQ(FrameRange::fromStartToEnd(3, 1, -1).frames(), (Frames{3, 2, 1}));
}

TEST(FrameRange, RefusesAStepThatNeverArrives) {
    EXPECT_EQ(failureOf([] { FrameRange::fromStartToEnd(1, 10, 0); }),
              std::string("wrong use: Frame range \"1-10x0\" is not understood: a step of 0 never reaches the end.") +
                  examples);
    EXPECT_EQ(failureOf([] { FrameRange::fromStartToEnd(10, 1, 1); }),
              std::string("wrong use: Frame range \"10-1x1\" is not understood: the step moves away from the end.") +
                  examples);
}

TEST(FrameRange, WritesTheShortestText) {
    EXPECT_EQ(FrameRange::string({}), "");
    EXPECT_EQ(FrameRange::string({7}), "7");
    EXPECT_EQ(FrameRange::string({1, 2, 3, 4, 10, 15, 20, 33}), "1-4,10-20x5,33");
    EXPECT_EQ(FrameRange::string({1, 5, 6, 7}), "1,5-7");
    EXPECT_EQ(FrameRange::string({9, 5, 1, -2, -3}), "9-1x4,-2--3");
}

TEST(FrameRange, ReadsBackWhatItWrites) {
    const Frames frames{-10, -5, 0, 5, 7, 8, 9, 3, 2, 1, 100};
    EXPECT_EQ(parsed(FrameRange::string(frames)), frames);
}
