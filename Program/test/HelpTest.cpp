#include "Help.h"

#include <gtest/gtest.h>

using Program::suggestionFor;

namespace {

const std::vector<std::string> commands{"render", "sample", "find", "info", "check", "plot", "stmap"};

} // namespace

TEST(Suggestion, IsTheNameWithTheFewestSlips) {
    EXPECT_EQ(suggestionFor("inof", commands), "; did you mean \"info\"?");
    EXPECT_EQ(suggestionFor("rendr", commands), "; did you mean \"render\"?");
    EXPECT_EQ(suggestionFor("chekk", commands), "; did you mean \"check\"?");
    EXPECT_EQ(suggestionFor("st-map", commands), "; did you mean \"stmap\"?");
    EXPECT_EQ(suggestionFor("--skip-exisiting", {"--skip", "--skip-existing"}), "; did you mean \"--skip-existing\"?");
}

TEST(Suggestion, IsNoneWhereNoNameIsNear) {
    for (const char* const word : {"", "x", "undistort", "render-all-frames", "oops"})
        EXPECT_EQ(suggestionFor(word, commands), "") << word;
}

TEST(Suggestion, IsNoneForAWordThatIsNoName) { EXPECT_EQ(suggestionFor(std::string(100000, 'a'), commands), ""); }
