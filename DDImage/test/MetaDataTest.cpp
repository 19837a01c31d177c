#include "DDImage/MetaData.h"

#include <gtest/gtest.h>

using DD::Image::MetaData::Bundle;

TEST(MetaData, KeepsTheTypeOfEachValue) {
    Bundle bundle;
    bundle.setData("text", "A001");
    bundle.setData("integer", 24);
    bundle.setData("number", 23.976f);
    bundle.setData("window", std::vector<std::int64_t>{0, 0, 2047, 1151});
    EXPECT_EQ(bundle.getString("text"), "A001");
    EXPECT_EQ(bundle.getDouble("integer"), 24);
    EXPECT_EQ(bundle.getDouble("number"), static_cast<double>(23.976f));
    EXPECT_EQ(std::get<std::vector<std::int64_t>>(*bundle.getData("window")).size(), 4u);
}

TEST(MetaData, FindsItsEndForAnAbsentKey) {
    const Bundle bundle;
    EXPECT_EQ(bundle.find("input/timecode"), bundle.end());
    EXPECT_EQ(bundle.getData("input/timecode"), nullptr);
}

TEST(MetaData, ConvertsNothing) {
    Bundle bundle;
    bundle.setData("text", "24");
    bundle.setData("number", 24.0);
    EXPECT_EQ(bundle.getDouble("text"), 0);
    EXPECT_EQ(bundle.getString("number"), "");
}
