#include "Report/Json.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

TEST(JsonText, IsIndentedByTwoSpaces) {
    EXPECT_EQ(Tools::jsonText({{"version", 1}, {"frames", {1, 2}}}), R"({
  "version": 1,
  "frames": [
    1,
    2
  ]
})");
}

TEST(JsonLine, IsOneLine) {
    EXPECT_EQ(Tools::jsonLine({{"version", 1}, {"name", "a"}}), R"({"version":1,"name":"a"})");
}

TEST(JsonText, ReplacesBytesThatAreNotUtf8) {
    EXPECT_EQ(Tools::jsonText("a\xFF"), "\"a\xEF\xBF\xBD\"");
    EXPECT_EQ(Tools::jsonLine("a\xFF"), "\"a\xEF\xBF\xBD\"");
}
