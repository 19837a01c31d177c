#include "Plot/LensCharts.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <utility>

#include "CorrectionData/Calculations/Calculations.h"
#include "Report/Dimensions.h"
#include "Report/Failure.h"

namespace Tools {

using CorrectionData::Frame;

ClipCurves::ClipCurves(const CorrectionFileData& file) : m_file(file) {
    const std::vector<const Frame*> fitted = fittedFrames();
    chooseDrawn(fitted);
    const float lastHeight = m_drawn.front().lastHeight();
    m_isFormatKnown = format().imageRadius > 0.0f && format().clipResolutionWidth > 0;
    m_radius = m_isFormatKnown ? format().imageRadius : lastHeight;
    m_end = std::max(m_radius, lastHeight);
    if (m_isFormatKnown) {
        m_lengthFactor = halfDiagonal(format().clipResolutionWidth, format().clipResolutionHeight) /
                         static_cast<double>(format().imageRadius);
        m_lengthUnit = "px";
    }
    sampleClip(fitted);
}

std::vector<const Frame*> ClipCurves::fittedFrames() {
    std::vector<const Frame*> fitted;
    for (const auto& [frameNumber, frame] : m_file.content->frames) {
        const bool isNew = fitted.empty() || !haveEqualValues(*fitted.back(), frame);
        if (isNew) m_areAllEqual = fitted.empty();
        try {
            if (isNew) LensCurves{frame};
            fitted.push_back(&frame);
        } catch (const CorrectionData::CoefficentCalculationFailedException&) {
            if (m_failedCount++ == 0) m_firstFailed = frameNumber;
        }
    }
    if (fitted.empty()) {
        refuse(fmt::format(
            "{}: {}. Run \"lenscorrect check\" on it for the reasons.", m_file.path,
            m_file.content->frames.empty() ? "there is no frame to plot" : "no frame's curves can be fitted"));
    }
    return fitted;
}

void ClipCurves::chooseDrawn(const std::vector<const Frame*>& fitted) {
    for (const Frame* frame : {fitted.front(), fitted[fitted.size() / 2], fitted.back()}) {
        const bool isNew = std::none_of(m_drawn.begin(), m_drawn.end(), [&](const LensCurves& curves) {
            return haveEqualValues(curves.frame(), *frame);
        });
        if (isNew) m_drawn.emplace_back(*frame);
    }
}

void ClipCurves::sampleClip(const std::vector<const Frame*>& fitted) {
    const std::size_t count = std::min(fitted.size(), mostSamples);
    const Frame* before = nullptr;
    for (std::size_t i = 0; i < count; ++i) {
        const Frame* frame = fitted[count == 1 ? 0 : i * (fitted.size() - 1) / (count - 1)];
        if (before && haveEqualValues(*before, *frame)) {
            m_samples.push_back(m_samples.back());
        } else {
            m_samples.push_back(sample(LensCurves(*frame)));
        }
        m_samples.back().frameNumber = static_cast<std::uint32_t>(frame->frameNumber);
        before = frame;
    }
}

ClipCurves::Sample ClipCurves::sample(const LensCurves& curves) const {
    Sample row;
    for (const auto& [part, name] : partHeights) {
        row.illumination.push_back(curves.illuminationAt(part * m_radius));
        row.distortion.push_back(curves.distortionAt(part * m_radius));
    }
    row.forwardResidual = m_lengthFactor * curves.largestForwardResidual();
    row.inverseResidual = m_lengthFactor * curves.largestInverseResidual();
    row.roundTrip = m_lengthFactor * curves.largestRoundTrip(m_radius);
    row.illuminationResidual = curves.largestIlluminationResidual();
    return row;
}

std::string ClipCurves::frameName(const LensCurves& curves) const {
    if (m_areAllEqual) return "all frames";
    return fmt::format("frame {}", curves.frame().frameNumber);
}

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
