#include "Verify/RoundTripReport.h"

#include <gtest/gtest.h>

#include <limits>
#include <nlohmann/json.hpp>

using Tools::RoundTrip;
using Tools::RoundTripReport;

namespace {

RoundTrip roundTrip(std::int32_t frame, double maps) {
    RoundTrip result;
    result.frame = frame;
    result.format = {1920, 1080};
    result.undistorted = {0, 0, 1919, 1079};
    result.redistorted = result.undistorted;
    result.imageRadius = 13.5;
    result.lastHeight = 14.0;
    result.analytic = 0.01;
    result.maps = maps;
    return result;
}

RoundTripReport report() {
    RoundTripReport report;
    report.input = "plate.olcf";
    report.frames = {roundTrip(1001, 0.25), roundTrip(1002, 0.5)};
    return report;
}

} // namespace

TEST(RoundTripReport, NamesTheWorstFrameOfEachError) {
    RoundTripReport worst = report();
    worst.frames[0].deviation = 2.0;
    EXPECT_EQ(worst.text(false),
              "Largest round-trip errors over 2 frames of 1920 x 1080 px:\n"
              "Curves                    0.0100 px  round-trip error of the curves (frame 1001)\n"
              "Maps                      0.5000 px  round-trip error of the nodes' sampling (frame 1002)\n"
              "Fit, corrected            0.0000 px  deviation of the curve from the measured points (frame 1001)\n"
              "Fit, recorded             0.0000 px  the same for its inverse (frame 1001)\n"
              "Deviation                 2.0000 px  of the node's undistorted picture from the ideal one (frame "
              "1001)\n");
}

TEST(RoundTripReport, CountsTheFramesBeyondTheTolerance) {
    RoundTripReport strict = report();
    strict.tolerance = 0.25;
    EXPECT_EQ(strict.exceededCount(), 1u);
}

TEST(RoundTripReport, TakesAnErrorThatIsNotANumberForTooLarge) {
    RoundTripReport strict = report();
    strict.tolerance = 1.0;
    strict.frames[1].maps = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(strict.exceededCount(), 1u);
}

TEST(RoundTripReport, WarnsOfACornerThatNobodyMeasured) {
    RoundTripReport beyond = report();
    beyond.frames[1].lastHeight = 13.25;
    const std::string text = beyond.text(false);
    EXPECT_EQ(
        text.substr(text.find("Warning")),
        "Warning: the frame's corner lies at 13.500 mm, beyond the last measured height of 13.250 mm (frame 1002); "
        "beyond it the curves are extrapolated.\n");
}

TEST(RoundTripReport, ListsFailedFramesInJson) {
    RoundTripReport failed = report();
    failed.failures[1003] = "Frame 1003: no record";
    const nlohmann::ordered_json json = failed.json();
    EXPECT_EQ(json["failedCount"], 1);
    EXPECT_EQ(json["frames"][2].dump(), R"({"frame":1003,"ok":false,"error":"Frame 1003: no record"})");
}
