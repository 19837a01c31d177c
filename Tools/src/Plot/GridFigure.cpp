#include "Plot/GridFigure.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

#include "Plot/LineChart.h"
#include "Plot/SvgText.h"

namespace Tools {

namespace {

using Point = LineChart::Point;

constexpr int radiusSteps = 120;

// Moves a point along its radius.
template <typename Radius>
Point moved(double x, double y, double enlarged, Radius radius) {
    const double distance = std::hypot(x, y);
    if (distance <= 0.0) return {x, y};
    const double factor = 1.0 + enlarged * (radius(distance) - distance) / distance;
    return {x * factor, y * factor};
}

std::string gridSvg(const char* id, const std::string& name, const std::string& note, const std::string& paths,
                    const std::string& attributes) {
    return fmt::format(
        R"(<svg xmlns="http://www.w3.org/2000/svg" class="figure" id="{0}" viewBox="0 0 {1} {2}" role="img" )"
        R"(aria-label="{3}"{4}>
<text class="title" x="8" y="18">{3}</text>
<text class="soft" x="8" y="38">{5}</text>
{6}</svg>
)",
        id, LineChart::width, LineChart::height, markupText(name), attributes, markupText(note), paths);
}

// Lines of points in mm become a path; the frame lies in the middle of the figure with a margin.
class Pen {
public:
    explicit Pen(double width, double height) : m_scale(std::min(330.0 / width, 205.0 / height)) {}

    std::string path(const char* style, const std::vector<Point>& points, bool isClosed = false) const {
        std::string text;
        for (const Point& point : points) {
            text += fmt::format("{}{:.1f} {:.1f}", text.empty() ? "M" : "L", 200 + m_scale * point.x,
                                170 + m_scale * point.y);
        }
        return fmt::format(R"(<path class="{}" d="{}{}"/>)", style, text, isClosed ? "Z" : "") + '\n';
    }

private:
    double m_scale;
};

template <typename Move>
std::string gridLines(double width, double height, const Pen& pen, const char* style, Move move) {
    constexpr int lineCount = 8;
    constexpr int pointCount = 32;
    std::string text;
    for (int line = 0; line <= lineCount; ++line) {
        std::vector<Point> vertical;
        std::vector<Point> horizontal;
        for (int step = 0; step <= pointCount; ++step) {
            const double along = static_cast<double>(step) / pointCount - 0.5;
            const double across = static_cast<double>(line) / lineCount - 0.5;
            vertical.push_back(move(width * across, height * along));
            horizontal.push_back(move(width * along, height * across));
        }
        text += pen.path(style, vertical) + pen.path(style, horizontal);
    }
    return text;
}

template <typename Move>
std::vector<Point> border(double width, double height, Move move) {
    constexpr int pointCount = 32;
    constexpr double corners[5][2] = {{-0.5, -0.5}, {0.5, -0.5}, {0.5, 0.5}, {-0.5, 0.5}, {-0.5, -0.5}};
    std::vector<Point> points;
    for (int side = 0; side < 4; ++side) {
        for (int step = 0; step < pointCount; ++step) {
            const double part = static_cast<double>(step) / pointCount;
            points.push_back(move(width * std::lerp(corners[side][0], corners[side + 1][0], part),
                                  height * std::lerp(corners[side][1], corners[side + 1][1], part)));
        }
    }
    return points;
}

Point unmoved(double x, double y) { return {x, y}; }

} // namespace

GridFigure::GridFigure(const LensCurves& curves, std::string name, double aspect, float radius)
    : m_curves(curves), m_name(std::move(name)), m_height(2 * static_cast<double>(radius) / std::hypot(aspect, 1.0)) {
    m_width = aspect * m_height;
    double largest = 0.0;
    for (int step = 1; step <= radiusSteps; ++step) {
        largest = std::max(largest, std::abs(curves.shiftAt(radius * static_cast<float>(step) / radiusSteps)));
    }
    for (const double factor : {2.0, 5.0, 10.0, 20.0}) {
        if (largest * factor < 0.06 * static_cast<double>(radius)) m_enlarged = factor;
    }
}

std::string GridFigure::note() const {
    return m_name + (m_enlarged > 1 ? fmt::format(", displacement × {:.0f}", m_enlarged) : "");
}

std::string GridFigure::recorded(const std::string& attributes) const {
    const Pen pen(m_width, m_height);
    const auto move = [&](double x, double y) {
        return moved(x, y, m_enlarged, [&](double distance) {
            return static_cast<double>(m_curves.distortion().undistorted.at(static_cast<float>(distance)));
        });
    };
    return gridSvg(
        "grid-recorded", "Grid before: straight lines as recorded", note() + "; grey: the frame",
        pen.path("axis", border(m_width, m_height, unmoved), true) + gridLines(m_width, m_height, pen, "thin s0", move),
        attributes);
}

std::string GridFigure::corrected(const std::string& attributes) const {
    const Pen pen(m_width, m_height);
    const auto move = [&](double x, double y) {
        return moved(x, y, m_enlarged, [&](double distance) {
            return static_cast<double>(m_curves.distortion().distorted.at(static_cast<float>(distance)));
        });
    };
    return gridSvg("grid-corrected", "Grid after: straight again", note() + "; dashed: the recorded border",
                   gridLines(m_width, m_height, pen, "thin s0", unmoved) +
                       pen.path("line s1", border(m_width, m_height, move), true),
                   attributes);
}

} // namespace Tools
