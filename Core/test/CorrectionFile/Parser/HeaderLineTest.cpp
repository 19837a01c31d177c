#include "CorrectionFile/Parser/HeaderLine.h"

#include <gtest/gtest.h>

#include <string>

namespace {

// "key|value", or "no" for a line that is not a header line; key and value must be untouched then.
std::string split(std::string_view line) {
    std::string_view key = "untouched";
    std::string_view value = "untouched";
    if (CorrectionFile::splitHeaderLine(line, key, value)) return std::string(key) + "|" + std::string(value);
    return key == "untouched" && value == "untouched" ? "no" : "changed";
}

} // namespace

TEST(HeaderLine, isSplitAtItsOnlySeparator) { EXPECT_EQ("cameraModel|Model : 1 =", split("cameraModel:=Model : 1 =")); }

TEST(HeaderLine, mayHaveAnEmptyValue) { EXPECT_EQ("cameraModel|", split("cameraModel:=")); }

TEST(HeaderLine, needsASeparator) { EXPECT_EQ("no", split("cameraModel=Model")); }

TEST(HeaderLine, mayNotHaveTwoSeparators) { EXPECT_EQ("no", split("cameraModel:=Mo:=del")); }
