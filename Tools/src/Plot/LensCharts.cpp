#include "Plot/LensCharts.h"

#include <fmt/format.h>

#include <string>
#include <utility>

namespace Tools {

namespace {

using CorrectionData::Frame;
using Sample = ClipCurves::Sample;

constexpr int curveSteps = 120;

template <typename Value>
LineChart overHeight(const ClipCurves& clip, const char* id, const char* name, const std::string& yLabel, Value value) {
    LineChart chart;
    chart.id = id;
    chart.title = name;
    chart.xLabel = "image height [mm]";
    chart.yLabel = yLabel;
    for (const LensCurves& curves : clip.drawn()) {
        LineChart::Series series;
        series.name = clip.frameName(curves);
        for (int step = 0; step <= curveSteps; ++step) {
            const float height = clip.end() * static_cast<float>(step) / curveSteps;
            series.points.push_back({static_cast<double>(height), value(curves, height)});
        }
        chart.series.push_back(std::move(series));
    }
    if (clip.isFormatKnown()) {
        const double side = 0.5 * static_cast<double>(clip.format().imageAreaWidth);
        chart.marks = {{side, "side"}, {static_cast<double>(clip.radius()), "corner"}};
    }
    return chart;
}

void addMeasured(const ClipCurves& clip, std::vector<float> Frame::*values, bool hasCentre, LineChart& chart) {
    for (std::size_t i = 0; i < clip.drawn().size(); ++i) {
        const Frame& frame = clip.drawn()[i].frame();
        for (std::size_t point = 0; point < frame.heights.size(); ++point) {
            if (!hasCentre && frame.heights[point] == 0.0f) continue;
            chart.series[i].dots.push_back(
                {static_cast<double>(frame.heights[point]), static_cast<double>((frame.*values)[point])});
        }
    }
}

LineChart illuminationChart(const ClipCurves& clip) {
    LineChart chart = overHeight(clip, "shading", "Shading", "relative illumination [%]",
                                 [](const LensCurves& curves, float height) { return curves.illuminationAt(height); });
    addMeasured(clip, &Frame::shading, true, chart);
    return chart;
}

LineChart distortionChart(const ClipCurves& clip) {
    LineChart chart = overHeight(clip, "distortion", "Distortion", "radial distortion [‰], positive: outward",
                                 [](const LensCurves& curves, float height) { return curves.distortionAt(height); });
    // What is measured at the centre has no effect on the curve.
    addMeasured(clip, &Frame::radialDistortion, false, chart);
    return chart;
}

LineChart shiftChart(const ClipCurves& clip) {
    return overHeight(
        clip, "shift", "Distortion as a shift in the picture",
        fmt::format("recorded − corrected [{}]", clip.lengthUnit()),
        [&](const LensCurves& curves, float height) { return clip.lengthFactor() * curves.shiftAt(height); });
}

LineChart roundTripChart(const ClipCurves& clip) {
    return overHeight(clip, "round-trip", "Round trip: corrected and distorted again",
                      fmt::format("deviation [{}]", clip.lengthUnit()), [&](const LensCurves& curves, float height) {
                          return clip.lengthFactor() * curves.roundTripAt(height);
                      });
}

LineChart overClip(const char* id, const char* name, const std::string& yLabel) {
    LineChart chart;
    chart.id = id;
    chart.title = name;
    chart.xLabel = "frame";
    chart.yLabel = yLabel;
    chart.hasWholeX = true;
    return chart;
}

template <typename Value>
LineChart::Series clipSeries(const ClipCurves& clip, const std::string& name, Value value) {
    LineChart::Series series;
    series.name = name;
    for (const Sample& row : clip.samples())
        series.points.push_back({static_cast<double>(row.frameNumber), value(row)});
    return series;
}

LineChart atPartHeights(const ClipCurves& clip, LineChart chart, std::vector<double> Sample::*values) {
    for (std::size_t part = 0; part < ClipCurves::partHeights.size(); ++part) {
        chart.series.push_back(clipSeries(clip, ClipCurves::partHeights[part].name,
                                          [&](const Sample& row) { return (row.*values)[part]; }));
    }
    return chart;
}

LineChart illuminationOverClip(const ClipCurves& clip) {
    return atPartHeights(clip, overClip("shading-over-clip", "Shading over the clip", "relative illumination [%]"),
                         &Sample::illumination);
}

LineChart distortionOverClip(const ClipCurves& clip) {
    return atPartHeights(clip, overClip("distortion-over-clip", "Distortion over the clip", "radial distortion [‰]"),
                         &Sample::distortion);
}

LineChart residualsOverClip(const ClipCurves& clip) {
    LineChart chart = overClip("residuals-over-clip", "Largest residuals over the clip",
                               fmt::format("deviation [{}]", clip.lengthUnit()));
    chart.isLogarithmic = true;
    chart.series = {clipSeries(clip, "round trip", [](const Sample& row) { return row.roundTrip; }),
                    clipSeries(clip, "fit to corrected", [](const Sample& row) { return row.forwardResidual; }),
                    clipSeries(clip, "fit to recorded", [](const Sample& row) { return row.inverseResidual; })};
    return chart;
}

} // namespace

std::vector<LineChart> lensCharts(const ClipCurves& clip) {
    return {illuminationChart(clip),  distortionChart(clip), shiftChart(clip),       illuminationOverClip(clip),
            distortionOverClip(clip), roundTripChart(clip),  residualsOverClip(clip)};
}

} // namespace Tools
