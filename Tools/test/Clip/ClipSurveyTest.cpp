#include "Clip/ClipSurvey.h"

#include <gtest/gtest.h>

#include <limits>

namespace Tools {
namespace {

std::string gaps(const std::vector<std::int32_t>& frames) {
    std::map<std::int32_t, std::string> files;
    for (const std::int32_t frame : frames) files[frame] = "file";
    return gapsBetween(files);
}

TEST(ClipSurvey, FindsNoGapInFramesThatFollowEachOther) {
    EXPECT_EQ(gaps({}), "");
    EXPECT_EQ(gaps({5}), "");
    EXPECT_EQ(gaps({-1, 0, 1}), "");
}

TEST(ClipSurvey, ListsGapsAsFramesAndRanges) { EXPECT_EQ(gaps({-3, 1, 2, 4}), "-2-0, 3"); }

TEST(ClipSurvey, ListsTheWidestGapThatThereCanBe) {
    EXPECT_EQ(gaps({std::numeric_limits<std::int32_t>::min(), std::numeric_limits<std::int32_t>::max()}),
              "-2147483647-2147483646");
}

TEST(ClipSurvey, CountsGapsBeyondTen) {
    std::vector<std::int32_t> frames;
    for (std::int32_t frame = 0; frame <= 22; frame += 2) frames.push_back(frame);
    EXPECT_EQ(gaps(frames), "1, 3, 5, 7, 9, 11, 13, 15, 17, 19 and 1 more gap");
    frames.push_back(24);
    EXPECT_EQ(gaps(frames), "1, 3, 5, 7, 9, 11, 13, 15, 17, 19 and 2 more gaps");
}

} // namespace
} // namespace Tools
