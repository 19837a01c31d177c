#include "Plot/LineChart.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

#include "Support/CommaLocale.h"

using testing::HasSubstr;
using testing::Not;
using Tools::LineChart;

namespace {

LineChart chart() {
    LineChart chart;
    chart.id = "chart";
    chart.title = "Title";
    chart.xLabel = "x [mm]";
    chart.yLabel = "y [%]";
    chart.series = {{"line", {{0.0, 0.0}, {5.0, 50.0}, {10.0, 100.0}}}};
    return chart;
}

} // namespace

// The plot spans x from 60 to 340 and y from 260 up to 73.
TEST(LineChart, drawsALineThroughItsPoints) {
    EXPECT_THAT(chart().svg(), HasSubstr(R"(data-series="line" d="M60.0 260.0L200.0 166.5L340.0 73.0"/>)"));
}

TEST(LineChart, writesTheLastValueBesideTheLinesEnd) {
    EXPECT_THAT(chart().svg(), HasSubstr(R"(<text class="t0" x="346.0" y="77.0">100.0</text>)"));
}

TEST(LineChart, movesValuesApartThatWouldCoverEachOther) {
    LineChart both = chart();
    both.series.push_back(both.series.front());
    const std::string svg = both.svg();
    EXPECT_THAT(svg, HasSubstr(R"(<text class="t0" x="346.0" y="77.0">)"));
    EXPECT_THAT(svg, HasSubstr(R"(<text class="t1" x="346.0" y="89.0">)"));
}

TEST(LineChart, interruptsALineWhereAValueIsNotFinite) {
    LineChart gap = chart();
    gap.series.front().points[1].y = std::numeric_limits<double>::quiet_NaN();
    EXPECT_THAT(gap.svg(), HasSubstr(R"(d="M60.0 260.0M340.0 73.0"/>)"));
}

TEST(LineChart, showsASinglePointAsARing) {
    LineChart single = chart();
    single.series.front().points.resize(1);
    EXPECT_THAT(single.svg(), HasSubstr(R"(<circle class="dot s0")"));
}

TEST(LineChart, drawsNothingForNoPoints) {
    LineChart empty = chart();
    empty.series.front().points.clear();
    EXPECT_THAT(empty.svg(), HasSubstr(R"(data-series="line" d=""/>)"));
}

TEST(LineChart, drawsZeroAtTheLowerEndOfALogarithmicAxis) {
    LineChart logarithmic = chart();
    logarithmic.isLogarithmic = true;
    EXPECT_THAT(logarithmic.svg(), HasSubstr(R"(data-series="line" d="M60.0 260.0L)"));
}

TEST(LineChart, writesMarkupFromNamesAsText) {
    LineChart odd = chart();
    odd.series.front().name = "<a&b>";
    EXPECT_THAT(odd.svg(), HasSubstr(R"(data-series="&lt;a&amp;b&gt;")"));
}

TEST(LineChart, isTheSameUnderEveryLocale) {
    const std::string expected = chart().svg();
    const Support::CommaLocale locale;
    EXPECT_EQ(expected, chart().svg());
}
