#include "CorrectionFile/Parser/FrameLine.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <boost/lexical_cast/bad_lexical_cast.hpp>
#include <string>

using CorrectionFile::parseFrameLine;
using testing::ElementsAre;

TEST(FrameLine, ofVersion3CarriesItsHeights) {
    CorrectionData::Frame frame;
    ASSERT_TRUE(parseFrameLine("7;0,1,2,3,4,5,6;100,99,98,97,96,95,94;0,-1,2,-3,4,-5,6;;;;;;01.00.00.00", true, frame));
    EXPECT_THAT(frame.heights, ElementsAre(0.0f, 1.0f, 2.0f, 3.0f, 4.0f, 5.0f, 6.0f));
}

TEST(FrameLine, ofVersion2IsMeasuredAtTheDefaultHeights) {
    CorrectionData::Frame frame;
    ASSERT_TRUE(parseFrameLine("7;100,99,98,97,96,95;0,-1,2,-3,4,-5;;;;;;01.00.00.00", false, frame));
    EXPECT_THAT(frame.heights, ElementsAre(0.0f, 5.0f, 10.0f, 15.0f, 18.0f, 21.4f));
}

TEST(FrameLine, withTooFewColumnsIsInvalid) {
    CorrectionData::Frame frame;
    EXPECT_FALSE(parseFrameLine("7;100", true, frame));
}

TEST(FrameLine, withTextForANumberIsABadCast) {
    CorrectionData::Frame frame;
    EXPECT_THROW(parseFrameLine("x;0;0;0;;;;;;", true, frame), boost::bad_lexical_cast);
}

TEST(FrameLine, afterTheTitleIsReadNext) {
    CorrectionFile::LineStream stream("# OLCF Version 3\nframe;title\nfirst\n");
    EXPECT_TRUE(CorrectionFile::readUntilFrameLines(stream));
    std::string_view line;
    ASSERT_TRUE(CorrectionFile::getLine(stream, line));
    EXPECT_EQ("first", line);
}
