#include "Inspect/LensReport.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

#include "Console/Failure.h"
#include "CorrectionData/Calculations/CoefficentCalculationFailedException.h"
#include "Inspect/GridFigure.h"
#include "Inspect/HeaderText.h"
#include "Inspect/LensCurves.h"
#include "Inspect/LineChart.h"
#include "Inspect/SvgText.h"

namespace Host {

namespace {

using CorrectionData::Frame;
using CorrectionData::Header;

constexpr int curveSteps = 120;
constexpr std::size_t mostFramesOverClip = 400;

bool haveEqualValues(const Frame& left, const Frame& right) {
    return left.heights == right.heights && left.shading == right.shading &&
           left.radialDistortion == right.radialDistortion;
}

// How lengths on the sensor are shown: in px of the clip, or in µm if the recording format is unknown.
struct LengthScale {
    double factor = 1000.0;
    std::string unit = "µm";
};

// A frame's row in the figures over the clip.
struct ClipSample {
    std::uint32_t frameNumber = 0;
    std::vector<double> illumination; ///< % at each of the part heights
    std::vector<double> distortion;   ///< ‰
    double forwardResidual = 0.0;
    double inverseResidual = 0.0;
    double roundTrip = 0.0;
    double illuminationResidual = 0.0;
};

constexpr std::pair<float, const char*> partHeights[] = {
    {0.25f, "25 %"}, {0.5f, "50 %"}, {0.75f, "75 %"}, {1.0f, "corner"}};

class ReportText {
public:
    explicit ReportText(const CorrectionFileData& file)
        : m_header(file.content->header),
          m_frames(file.content->frames),
          m_format(file.recordingFormat),
          m_path(file.path) {
        chooseFrames();
        const float lastHeight = m_curves.front().lastHeight();
        m_isFormatKnown = m_format.imageRadius > 0.0f && m_format.clipResolutionWidth > 0;
        m_radius = m_isFormatKnown ? m_format.imageRadius : lastHeight;
        m_end = std::max(m_radius, lastHeight);
        if (m_isFormatKnown) {
            m_scale = {std::hypot(m_format.clipResolutionWidth, m_format.clipResolutionHeight) / 2 /
                           static_cast<double>(m_format.imageRadius),
                       "px"};
        }
        sampleClip();
        m_charts = {illuminationChart(),  distortionChart(), shiftChart(),       illuminationOverClip(),
                    distortionOverClip(), roundTripChart(),  residualsOverClip()};
    }

    std::string html() const {
        std::string figures;
        for (const LineChart& chart : m_charts) figures += "<figure>\n" + chart.svg() + "</figure>\n";
        const GridFigure grid = this->grid();
        figures += "<figure>\n" + grid.recorded("") + "</figure>\n<figure>\n" + grid.corrected("") + "</figure>\n";
        return fmt::format(R"(<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width,initial-scale=1">
<meta name="color-scheme" content="light dark">
<title>{title}</title>
<style>
{style}*{{box-sizing:border-box}}
body{{margin:0;padding:20px 16px 40px;background:var(--paper);color:var(--ink);font:15px/1.5 system-ui,"DejaVu Sans",sans-serif}}
main{{max-width:1360px;margin:auto}}
h1{{font-size:1.5rem;line-height:1.25;margin:0 0 2px;overflow-wrap:anywhere}}
h2{{font-size:1.1rem;margin:28px 0 8px}}
p{{margin:0 0 14px;max-width:72ch}}
.lead{{color:var(--soft);overflow-wrap:anywhere}}
.facts{{display:grid;grid-template-columns:repeat(auto-fill,minmax(min(100%,max(140px,22%)),1fr));gap:10px 24px;margin:16px 0 22px}}
.facts div{{border-top:1px solid var(--edge);padding-top:6px}}
.facts dt{{color:var(--soft);font-size:.8rem}}
.facts dd{{margin:0;overflow-wrap:anywhere}}
.figures{{display:grid;grid-template-columns:repeat(auto-fill,minmax(min(100%,340px),1fr));gap:16px}}
figure{{margin:0;padding:8px;background:var(--card);border:1px solid var(--edge);border-radius:8px;break-inside:avoid}}
figure svg{{display:block;width:100%;height:auto}}
.scroll{{overflow-x:auto}}
table{{border-collapse:collapse;font-variant-numeric:tabular-nums;font-size:.88rem}}
th,td{{text-align:right;padding:4px 10px;border-bottom:1px solid var(--edge);white-space:nowrap}}
th:first-child,td:first-child{{text-align:left;padding-left:0}}
thead th{{color:var(--soft);font-weight:600}}
summary h2{{display:inline-block}}
.note{{border-left:3px solid var(--s1);padding-left:10px}}
</style>
</head>
<body>
<main>
<h1>{heading}</h1>
<p class="lead">{lead}</p>
{notes}<dl class="facts">
{facts}</dl>
<section class="figures">
{figures}</section>
<h2>Residuals</h2>
<p>The curves pass through the measured points, up to the rounding of single precision. Distorting is not the exact inverse of
correcting: each direction has a curve of its own, and between the points they miss each other by the round trip.</p>
<div class="scroll">
<table>
<thead><tr><th>Frame</th><th>Illumination [%]</th><th>To corrected [{unit}]</th><th>To recorded [{unit}]</th><th>Round trip [{unit}]</th></tr></thead>
<tbody>
{residuals}</tbody>
</table>
</div>
<details>
<summary><h2>Measured values</h2></summary>
<div class="scroll">
<table>
<thead><tr><th>Frame</th><th>Height [mm]</th><th>Illumination [%]</th><th>Distortion [‰]</th></tr></thead>
<tbody>
{values}</tbody>
</table>
</div>
</details>
</main>
</body>
</html>
)",
                           fmt::arg("title", title()), fmt::arg("style", figureStyle), fmt::arg("heading", lens()),
                           fmt::arg("lead", lead()), fmt::arg("notes", notes()), fmt::arg("facts", facts()),
                           fmt::arg("figures", figures), fmt::arg("unit", m_scale.unit),
                           fmt::arg("residuals", residualRows()), fmt::arg("values", valueRows()));
    }

    std::string svg() const {
        constexpr int gap = 20;
        constexpr int headHeight = 64;
        constexpr int columnWidth = LineChart::width + gap;
        constexpr int rowHeight = LineChart::height + gap;
        const std::size_t figureCount = m_charts.size() + 2;
        const auto rowCount = static_cast<int>((figureCount + 1) / 2);
        const auto place = [&](std::size_t index) {
            return fmt::format(
                R"( x="{}" y="{}" width="{}" height="{}")", gap + static_cast<int>(index % 2) * columnWidth,
                headHeight + static_cast<int>(index / 2) * rowHeight, LineChart::width, LineChart::height);
        };
        std::string figures;
        for (std::size_t i = 0; i < m_charts.size(); ++i) figures += m_charts[i].svg(place(i));
        const GridFigure grid = this->grid();
        figures += grid.recorded(place(m_charts.size())) + grid.corrected(place(m_charts.size() + 1));
        const int width = gap + 2 * columnWidth;
        const int height = headHeight + rowCount * rowHeight;
        return fmt::format(R"(<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {0} {1}" width="{0}" height="{1}">
<title>{2}</title>
<style>
{3}svg{{background:var(--paper)}}
</style>
<g class="figure">
<text class="title" x="28" y="28">{4}</text>
<text class="soft" x="28" y="48">{5}</text>
</g>
{6}</svg>
)",
                           width, height, title(), figureStyle, lens(), lead(), figures);
    }

private:
    // The first, the middle and the last frame, of those with equal values only one.
    void chooseFrames() {
        std::vector<const Frame*> fitted;
        for (const auto& [frameNumber, frame] : m_frames) {
            if (fitted.empty() || !haveEqualValues(*fitted.back(), frame)) m_areAllEqual = fitted.empty();
            try {
                if (fitted.empty() || !haveEqualValues(*fitted.back(), frame)) LensCurves{frame};
                fitted.push_back(&frame);
            } catch (const CorrectionData::CoefficentCalculationFailedException&) {
                if (m_failedCount++ == 0) m_firstFailed = frameNumber;
            }
        }
        if (fitted.empty()) {
            throw Failure(
                ExitCode::WrongUse,
                fmt::format("{}: {}. Run \"lenscorrect check\" on it for the reasons.", m_path,
                            m_frames.empty() ? "there is no frame to plot" : "no frame's curves can be fitted"));
        }
        for (const Frame* frame : {fitted.front(), fitted[fitted.size() / 2], fitted.back()}) {
            const bool isNew = std::none_of(m_curves.begin(), m_curves.end(), [&](const LensCurves& curves) {
                return haveEqualValues(curves.frame(), *frame);
            });
            if (isNew) m_curves.emplace_back(*frame);
        }
        // Evenly spaced, with the first and the last.
        const std::size_t count = std::min(fitted.size(), mostFramesOverClip);
        for (std::size_t i = 0; i < count; ++i) {
            m_sampledFrames.push_back(fitted[count == 1 ? 0 : i * (fitted.size() - 1) / (count - 1)]);
        }
    }

    void sampleClip() {
        const Frame* before = nullptr;
        for (const Frame* frame : m_sampledFrames) {
            if (before && haveEqualValues(*before, *frame)) {
                m_samples.push_back(m_samples.back());
            } else {
                m_samples.push_back(sample(LensCurves(*frame)));
            }
            m_samples.back().frameNumber = static_cast<std::uint32_t>(frame->frameNumber);
            before = frame;
        }
    }

    ClipSample sample(const LensCurves& curves) const {
        ClipSample row;
        for (const auto& [part, name] : partHeights) {
            row.illumination.push_back(curves.illuminationAt(part * m_radius));
            row.distortion.push_back(curves.distortionAt(part * m_radius));
        }
        row.forwardResidual = m_scale.factor * curves.largestForwardResidual();
        row.inverseResidual = m_scale.factor * curves.largestInverseResidual();
        row.roundTrip = m_scale.factor * curves.largestRoundTrip(m_radius);
        row.illuminationResidual = curves.largestIlluminationResidual();
        return row;
    }

    std::string frameName(const LensCurves& curves) const {
        if (m_areAllEqual) return "all frames";
        return fmt::format("frame {}", curves.frame().frameNumber);
    }

    template <typename Value>
    LineChart overHeight(const char* id, const char* name, const std::string& yLabel, Value value) const {
        LineChart chart;
        chart.id = id;
        chart.title = name;
        chart.xLabel = "image height [mm]";
        chart.yLabel = yLabel;
        for (const LensCurves& curves : m_curves) {
            LineChart::Series series;
            series.name = frameName(curves);
            for (int step = 0; step <= curveSteps; ++step) {
                const float height = m_end * static_cast<float>(step) / curveSteps;
                series.points.push_back({static_cast<double>(height), value(curves, height)});
            }
            chart.series.push_back(std::move(series));
        }
        if (m_isFormatKnown) {
            const double side = 0.5 * static_cast<double>(m_format.imageAreaWidth);
            chart.marks = {{side, "side"}, {static_cast<double>(m_radius), "corner"}};
        }
        return chart;
    }

    LineChart illuminationChart() const {
        LineChart chart =
            overHeight("shading", "Shading", "relative illumination [%]",
                       [](const LensCurves& curves, float height) { return curves.illuminationAt(height); });
        for (std::size_t i = 0; i < m_curves.size(); ++i) {
            const Frame& frame = m_curves[i].frame();
            for (std::size_t point = 0; point < frame.heights.size(); ++point) {
                chart.series[i].dots.push_back(
                    {static_cast<double>(frame.heights[point]), static_cast<double>(frame.shading[point])});
            }
        }
        return chart;
    }

    LineChart distortionChart() const {
        LineChart chart =
            overHeight("distortion", "Distortion", "radial distortion [‰], positive: outward",
                       [](const LensCurves& curves, float height) { return curves.distortionAt(height); });
        for (std::size_t i = 0; i < m_curves.size(); ++i) {
            const Frame& frame = m_curves[i].frame();
            for (std::size_t point = 0; point < frame.heights.size(); ++point) {
                // What is measured at the centre has no effect on the curve.
                if (frame.heights[point] == 0.0f) continue;
                chart.series[i].dots.push_back(
                    {static_cast<double>(frame.heights[point]), static_cast<double>(frame.radialDistortion[point])});
            }
        }
        return chart;
    }

    LineChart shiftChart() const {
        return overHeight(
            "shift", "Distortion as a shift in the picture", fmt::format("recorded − corrected [{}]", m_scale.unit),
            [this](const LensCurves& curves, float height) { return m_scale.factor * curves.shiftAt(height); });
    }

    LineChart roundTripChart() const {
        return overHeight(
            "round-trip", "Round trip: corrected and distorted again", fmt::format("deviation [{}]", m_scale.unit),
            [this](const LensCurves& curves, float height) { return m_scale.factor * curves.roundTripAt(height); });
    }

    LineChart overClip(const char* id, const char* name, const std::string& yLabel) const {
        LineChart chart;
        chart.id = id;
        chart.title = name;
        chart.xLabel = "frame";
        chart.yLabel = yLabel;
        chart.hasWholeX = true;
        return chart;
    }

    template <typename Value>
    LineChart::Series clipSeries(const std::string& name, Value value) const {
        LineChart::Series series;
        series.name = name;
        for (const ClipSample& row : m_samples)
            series.points.push_back({static_cast<double>(row.frameNumber), value(row)});
        return series;
    }

    LineChart illuminationOverClip() const {
        LineChart chart = overClip("shading-over-clip", "Shading over the clip", "relative illumination [%]");
        for (std::size_t part = 0; part < std::size(partHeights); ++part) {
            chart.series.push_back(
                clipSeries(partHeights[part].second, [part](const ClipSample& row) { return row.illumination[part]; }));
        }
        return chart;
    }

    LineChart distortionOverClip() const {
        LineChart chart = overClip("distortion-over-clip", "Distortion over the clip", "radial distortion [‰]");
        for (std::size_t part = 0; part < std::size(partHeights); ++part) {
            chart.series.push_back(
                clipSeries(partHeights[part].second, [part](const ClipSample& row) { return row.distortion[part]; }));
        }
        return chart;
    }

    LineChart residualsOverClip() const {
        LineChart chart = overClip("residuals-over-clip", "Largest residuals over the clip",
                                   fmt::format("deviation [{}]", m_scale.unit));
        chart.isLogarithmic = true;
        chart.series = {clipSeries("round trip", [](const ClipSample& row) { return row.roundTrip; }),
                        clipSeries("fit to corrected", [](const ClipSample& row) { return row.forwardResidual; }),
                        clipSeries("fit to recorded", [](const ClipSample& row) { return row.inverseResidual; })};
        return chart;
    }

    GridFigure grid() const {
        const double aspect = m_isFormatKnown
                                  ? static_cast<double>(m_format.clipResolutionWidth) / m_format.clipResolutionHeight
                                  : 16.0 / 9.0;
        return {m_curves.front(), frameName(m_curves.front()), aspect, m_radius};
    }

    std::string lens() const {
        const std::string name = lensName(m_header);
        return markupText(name.empty() ? "Unknown lens" : name);
    }

    std::string title() const { return lens() + ", " + markupText(m_header.clipName) + " – lens report"; }

    std::string lead() const {
        const std::string camera = cameraName(m_header);
        return markupText(fmt::format("{}{}clip {}, frames {}–{}", camera, camera.empty() ? "" : ", ",
                                      m_header.videoFileName, m_frames.begin()->first, m_frames.rbegin()->first));
    }

    std::string notes() const {
        std::string text;
        if (m_failedCount > 0) {
            text += fmt::format(
                "<p class=\"note\">No curve can be fitted for {} of {} frames, the first being frame {}; they cannot "
                "be "
                "corrected.</p>\n",
                m_failedCount, m_frames.size(), m_firstFailed);
        }
        if (!m_isFormatKnown) {
            text +=
                "<p class=\"note\">The recording format is unknown, so lengths are given in µm on the sensor, and the "
                "largest "
                "measured height stands for the image's corner.</p>\n";
        }
        if (m_sampledFrames.size() == mostFramesOverClip && m_frames.size() > mostFramesOverClip) {
            text += fmt::format(
                "<p class=\"lead\">The figures over the clip show {} of its {} frames, evenly spaced.</p>\n",
                mostFramesOverClip, m_frames.size());
        }
        return text;
    }

    std::string facts() const {
        std::string text;
        const auto fact = [&](const char* name, const std::string& value) {
            text +=
                fmt::format("<div><dt>{}</dt><dd>{}</dd></div>\n", name, markupText(value.empty() ? "unknown" : value));
        };
        fact("Serial number", m_header.lensSerialNumber);
        fact("Focal length", focalLengthText(m_header));
        fact("Clip size", fmt::format("{} × {} px", m_header.clipWidth, m_header.clipHeight));
        fact("Image area", m_isFormatKnown
                               ? fmt::format("{:.2f} × {:.2f} mm", m_format.imageAreaWidth, m_format.imageAreaHeight)
                               : "");
        fact("Image radius (corner)", m_isFormatKnown ? fmt::format("{:.3f} mm", m_format.imageRadius) : "");
        fact("Timecode rate", m_header.tcFps > 0.0f ? fmt::format("{} frames/s", m_header.tcFps) : "none");
        const LensCurves& curves = m_curves.front();
        fact("Corner illumination", fmt::format("{:.1f} % ({})", curves.illuminationAt(m_radius), frameName(curves)));
        fact("Corner distortion",
             fmt::format("{:.2f} ‰, {:.1f} {} ({})", curves.distortionAt(m_radius),
                         m_scale.factor * curves.shiftAt(m_radius), m_scale.unit, frameName(curves)));
        return text;
    }

    std::string residualRows() const {
        std::string text;
        for (const LensCurves& curves : m_curves) {
            const ClipSample row = sample(curves);
            text += fmt::format("<tr><td>{}</td><td>{:.2g}</td><td>{:.2g}</td><td>{:.2g}</td><td>{:.2g}</td></tr>\n",
                                frameName(curves), row.illuminationResidual, row.forwardResidual, row.inverseResidual,
                                row.roundTrip);
        }
        return text;
    }

    std::string valueRows() const {
        std::string text;
        for (const LensCurves& curves : m_curves) {
            const Frame& frame = curves.frame();
            for (std::size_t i = 0; i < frame.heights.size(); ++i) {
                text += fmt::format("<tr><td>{}</td><td>{}</td><td>{}</td><td>{}</td></tr>\n", frameName(curves),
                                    frame.heights[i], frame.shading[i], frame.radialDistortion[i]);
            }
        }
        return text;
    }

    const Header& m_header;
    const std::map<std::uint32_t, Frame>& m_frames;
    const RecordingFormatDatabase::RecordingFormat& m_format;
    const std::string& m_path;

    std::vector<LensCurves> m_curves; ///< of the frames whose curves are drawn
    bool m_areAllEqual = false;
    std::size_t m_failedCount = 0;
    std::uint32_t m_firstFailed = 0;
    std::vector<const Frame*> m_sampledFrames;
    std::vector<ClipSample> m_samples;

    bool m_isFormatKnown = false;
    float m_radius = 0.0f; ///< mm, of the image's corner
    float m_end = 0.0f;    ///< mm, where the curves end
    LengthScale m_scale;
    std::vector<LineChart> m_charts;
};

} // namespace

LensReport::LensReport(const CorrectionFileData& file) {
    const ReportText text(file);
    m_html = text.html();
    m_svg = text.svg();
}

} // namespace Host
