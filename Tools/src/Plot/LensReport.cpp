#include "Plot/LensReport.h"

#include <fmt/format.h>

#include <vector>

#include "Info/HeaderText.h"
#include "Plot/ClipCurves.h"
#include "Plot/GridFigure.h"
#include "Plot/LensCharts.h"
#include "Plot/SvgText.h"

namespace Tools {

namespace {

class ReportText {
public:
    explicit ReportText(const CorrectionFileData& file)
        : m_header(file.content->header), m_frames(file.content->frames), m_clip(file), m_charts(lensCharts(m_clip)) {}

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
                           fmt::arg("figures", figures), fmt::arg("unit", m_clip.lengthUnit()),
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
    GridFigure grid() const {
        const double aspect = m_clip.isFormatKnown() ? static_cast<double>(m_clip.format().clipResolutionWidth) /
                                                           m_clip.format().clipResolutionHeight
                                                     : 16.0 / 9.0;
        return {m_clip.drawn().front(), m_clip.frameName(m_clip.drawn().front()), aspect, m_clip.radius()};
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
        if (m_clip.failedCount() > 0) {
            text += fmt::format(
                "<p class=\"note\">No curve can be fitted for {} of {} frames, the first being frame {}; they cannot "
                "be corrected.</p>\n",
                m_clip.failedCount(), m_frames.size(), m_clip.firstFailed());
        }
        if (!m_clip.isFormatKnown()) {
            text +=
                "<p class=\"note\">The recording format is unknown, so lengths are given in µm on the sensor, and the "
                "largest measured height represents the image corner.</p>\n";
        }
        if (m_clip.samples().size() == ClipCurves::mostSamples && m_frames.size() > ClipCurves::mostSamples) {
            text += fmt::format(
                "<p class=\"lead\">The figures over the clip show {} of its {} frames, evenly spaced.</p>\n",
                ClipCurves::mostSamples, m_frames.size());
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
        fact("Image area", m_clip.isFormatKnown() ? fmt::format("{:.2f} × {:.2f} mm", m_clip.format().imageAreaWidth,
                                                                m_clip.format().imageAreaHeight)
                                                  : "");
        fact("Image radius (corner)",
             m_clip.isFormatKnown() ? fmt::format("{:.3f} mm", m_clip.format().imageRadius) : "");
        fact("Timecode rate", m_header.tcFps > 0.0f ? fmt::format("{} frames/s", m_header.tcFps) : "none");
        const LensCurves& curves = m_clip.drawn().front();
        fact("Corner illumination",
             fmt::format("{:.1f} % ({})", curves.illuminationAt(m_clip.radius()), m_clip.frameName(curves)));
        fact("Corner distortion", fmt::format("{:.2f} ‰, {:.1f} {} ({})", curves.distortionAt(m_clip.radius()),
                                              m_clip.lengthFactor() * curves.shiftAt(m_clip.radius()),
                                              m_clip.lengthUnit(), m_clip.frameName(curves)));
        return text;
    }

    std::string residualRows() const {
        std::string text;
        for (const LensCurves& curves : m_clip.drawn()) {
            const ClipCurves::Sample row = m_clip.sample(curves);
            text += fmt::format("<tr><td>{}</td><td>{:.2g}</td><td>{:.2g}</td><td>{:.2g}</td><td>{:.2g}</td></tr>\n",
                                m_clip.frameName(curves), row.illuminationResidual, row.forwardResidual,
                                row.inverseResidual, row.roundTrip);
        }
        return text;
    }

    std::string valueRows() const {
        std::string text;
        for (const LensCurves& curves : m_clip.drawn()) {
            const CorrectionData::Frame& frame = curves.frame();
            for (std::size_t i = 0; i < frame.heights.size(); ++i) {
                text += fmt::format("<tr><td>{}</td><td>{}</td><td>{}</td><td>{}</td></tr>\n", m_clip.frameName(curves),
                                    frame.heights[i], frame.shading[i], frame.radialDistortion[i]);
            }
        }
        return text;
    }

    const CorrectionData::Header& m_header;
    const std::map<std::uint32_t, CorrectionData::Frame>& m_frames;
    const ClipCurves m_clip;
    const std::vector<LineChart> m_charts;
};

} // namespace

LensReport::LensReport(const CorrectionFileData& file) {
    const ReportText text(file);
    m_html = text.html();
    m_svg = text.svg();
}

} // namespace Tools
