#include "Console/Json.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

TEST(JsonText, IsIndentedByTwoSpaces) {
    EXPECT_EQ(Host::jsonText({{"version", 1}, {"frames", {1, 2}}}), R"({
  "version": 1,
  "frames": [
    1,
    2
  ]
})");
}

TEST(JsonLine, IsOneLine) { EXPECT_EQ(Host::jsonLine({{"version", 1}, {"name", "a"}}), R"({"version":1,"name":"a"})"); }

TEST(JsonText, ReplacesBytesThatAreNotUtf8) {
    EXPECT_EQ(Host::jsonText("a\xFF"), "\"a\xEF\xBF\xBD\"");
    EXPECT_EQ(Host::jsonLine("a\xFF"), "\"a\xEF\xBF\xBD\"");
}
