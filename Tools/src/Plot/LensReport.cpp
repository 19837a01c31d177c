#include "Plot/LensReport.h"

#include <fmt/format.h>

#include <vector>

#include "Lens/CorrectionFileData.h"
#include "Plot/GridFigure.h"
#include "Plot/LensCharts.h"
#include "Plot/SvgText.h"

namespace Tools {

namespace {

constexpr const char* pageText =
#include "Plot/LensReport.html.inc"
    ;

/// What the page needs beside the figures' own style.
constexpr const char* pageStyle =
#include "Plot/LensReport.css.inc"
    ;

class ReportText {
public:
    explicit ReportText(const CorrectionFileData& file)
        : m_header(file.content->header), m_frames(file.content->frames), m_clip(file), m_charts(lensCharts(m_clip)) {}

    std::string html() const {
        std::string figures;
        for (const LineChart& chart : m_charts) figures += "<figure>\n" + chart.svg() + "</figure>\n";
        const GridFigure grid = this->grid();
        figures += "<figure>\n" + grid.recorded("") + "</figure>\n<figure>\n" + grid.corrected("") + "</figure>\n";
        return fmt::format(pageText, fmt::arg("title", title()),
                           fmt::arg("style", std::string(figureStyle) + pageStyle), fmt::arg("heading", lens()),
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
