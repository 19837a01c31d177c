#include "Plot/LineChart.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "Plot/SvgText.h"

namespace Tools {

namespace {

constexpr double left = 60;
constexpr double right = LineChart::width - 60;
constexpr double bottom = LineChart::height - 40;
constexpr double smallestLogarithm = -5; // what single precision cannot resolve needs no room

struct Range {
    double low = 0.0;
    double high = 1.0;

    double position(double value, double start, double end) const {
        return start + (value - low) / (high - low) * (end - start);
    }
};

// The largest of 1, 2 and 5 times a power of ten that gives at least so many steps.
double niceStep(double span, int stepCount) {
    const double raw = span / stepCount;
    const double power = std::pow(10.0, std::floor(std::log10(raw)));
    for (const double factor : {1.0, 2.0, 5.0}) {
        if (factor * power >= raw * 0.999999) return factor * power;
    }
    return 10.0 * power;
}

int decimalsOf(double step) { return std::clamp(static_cast<int>(std::ceil(-std::log10(step) - 1e-9)), 0, 9); }

std::string number(double value, int decimals) {
    std::string text = fmt::format("{:.{}f}", value, decimals);
    // Tiny negative numbers would read "-0.0".
    if (text.find_first_not_of("-0.") == std::string::npos && text.front() == '-') text.erase(0, 1);
    if (text.front() == '-') text.replace(0, 1, "−");
    return text;
}

std::string powerOfTen(int exponent) {
    static const char* const digits[] = {"⁰", "¹", "²", "³", "⁴", "⁵", "⁶", "⁷", "⁸", "⁹"};
    if (exponent >= 0 && exponent <= 3) return fmt::format("{:.0f}", std::pow(10.0, exponent));
    if (exponent < 0 && exponent >= -3) return fmt::format("{:.{}f}", std::pow(10.0, exponent), -exponent);
    std::string text = exponent < 0 ? "10⁻" : "10";
    for (const char digit : std::to_string(std::abs(exponent))) text += digits[digit - '0'];
    return text;
}

class Drawing {
public:
    explicit Drawing(const LineChart& chart) : m_chart(chart) {
        m_legend = legend();
        m_x = xRange();
        m_y = yRange();
    }

    std::string body() const {
        std::string text;
        text += fmt::format(R"(<text class="title" x="8" y="18">{}</text>)", markupText(m_chart.title)) + '\n';
        text += m_legend + yAxis() + xAxis() + marks();
        for (std::size_t i = 0; i < m_chart.series.size(); ++i) text += line(m_chart.series[i], i);
        return text + endLabels();
    }

private:
    double scaled(double y) const {
        if (!m_chart.isLogarithmic) return y;
        return y > 0.0 ? std::max(std::log10(y), smallestLogarithm) : smallestLogarithm;
    }

    template <typename Value>
    Range range(Value value) const {
        Range found{std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity()};
        for (const LineChart::Series& series : m_chart.series) {
            for (const auto* points : {&series.points, &series.dots}) {
                for (const LineChart::Point& point : *points) {
                    const double number = value(point);
                    if (!std::isfinite(number)) continue;
                    found.low = std::min(found.low, number);
                    found.high = std::max(found.high, number);
                }
            }
        }
        if (!(found.low <= found.high)) return {};
        return found;
    }

    Range xRange() const {
        Range found = range([](const LineChart::Point& point) { return point.x; });
        if (found.high - found.low < 1e-9) found = {found.low - 1.0, found.high + 1.0};
        return found;
    }

    Range yRange() {
        Range found = range([this](const LineChart::Point& point) { return scaled(point.y); });
        if (m_chart.isLogarithmic) {
            found = {std::floor(found.low), std::ceil(found.high)};
            if (found.high - found.low < 1.0) found.high = found.low + 1.0;
            m_yStep = std::max(1.0, std::ceil((found.high - found.low) / 6));
            return found;
        }
        const double smallest = std::max(1e-9, std::abs(found.high) * 1e-6);
        if (found.high - found.low < smallest) {
            const double margin = std::max(std::abs(found.high) * 0.01, smallest);
            found = {found.low - margin, found.high + margin};
        }
        // A line may leave the last step by a little, for which another step would waste room.
        constexpr double little = 0.03;
        m_yStep = niceStep(found.high - found.low, 5);
        return {std::floor(found.low / m_yStep + little) * m_yStep, std::ceil(found.high / m_yStep - little) * m_yStep};
    }

    double xPosition(double x) const { return m_x.position(x, left, right); }
    double yPosition(double y) const { return m_y.position(scaled(y), bottom, m_top); }

    // In as many rows as it needs; the plot begins below it.
    std::string legend() {
        constexpr double rowHeight = 15;
        std::string text;
        double x = 8;
        double y = 36;
        bool hasDots = false;
        const auto entry = [&](const std::string& mark, const std::string& name, double markWidth) {
            const double entryWidth = markWidth + 5 + 6.6 * static_cast<double>(name.size());
            if (x > 8 && x + entryWidth > LineChart::width - 8) {
                x = 8;
                y += rowHeight;
            }
            text +=
                fmt::format(
                    R"svg(<g transform="translate({:.1f} {:.0f})">{}<text class="soft" x="{:.0f}" y="4">{}</text></g>)svg",
                    x, y, mark, markWidth + 5, markupText(name)) +
                '\n';
            x += entryWidth + 10;
        };
        for (std::size_t i = 0; i < m_chart.series.size(); ++i) {
            hasDots |= !m_chart.series[i].dots.empty();
            entry(fmt::format(R"(<path class="line s{}" d="M0 0H22"/>)", i), m_chart.series[i].name, 22);
        }
        if (hasDots) entry(R"(<circle class="dot s0" cx="4" cy="0" r="3"/>)", "measured", 8);
        m_top = y + 37;
        return text;
    }

    std::string yAxis() const {
        std::string text =
            fmt::format(R"(<text class="soft" x="8" y="{:.0f}">{}</text>)", m_top - 15, markupText(m_chart.yLabel)) +
            '\n';
        for (int i = 0; m_y.low + i * m_yStep <= m_y.high + m_yStep * 1e-6; ++i) {
            const double value = m_y.low + i * m_yStep;
            const double y = m_y.position(value, bottom, m_top);
            const std::string label = m_chart.isLogarithmic ? powerOfTen(static_cast<int>(std::lround(value)))
                                                            : number(value, decimalsOf(m_yStep));
            text +=
                fmt::format(R"(<path class="rule" d="M{:.1f} {:.1f}H{:.1f}"/><text class="soft" x="{:.1f}" y="{:.1f}" )"
                            R"(text-anchor="end">{}</text>)",
                            left, y, right, left - 6, y + 4, label) +
                '\n';
        }
        return text;
    }

    std::string xAxis() const {
        std::string text = fmt::format(R"(<path class="axis" d="M{:.1f} {:.1f}H{:.1f}"/>)", left, bottom, right) + '\n';
        double step = niceStep(m_x.high - m_x.low, 6);
        if (m_chart.hasWholeX) step = std::max(step, 1.0);
        for (double value = std::ceil(m_x.low / step - 1e-9) * step; value <= m_x.high + step * 1e-6; value += step) {
            const double x = xPosition(value);
            text += fmt::format(R"(<path class="axis" d="M{:.1f} {:.1f}v4"/><text class="soft" x="{:.1f}" y="{:.1f}" )"
                                R"(text-anchor="middle">{}</text>)",
                                x, bottom, x, bottom + 17, number(value, decimalsOf(step))) +
                    '\n';
        }
        return text +
               fmt::format(R"(<text class="soft" x="{:.1f}" y="{:.1f}" text-anchor="middle">{}</text>)",
                           (left + right) / 2, bottom + 33, markupText(m_chart.xLabel)) +
               '\n';
    }

    std::string marks() const {
        std::string text;
        for (const LineChart::Mark& mark : m_chart.marks) {
            if (mark.x < m_x.low || mark.x > m_x.high * 1.000001) continue;
            const double x = xPosition(mark.x);
            // The names of neighbouring marks keep apart.
            const char* const anchor = &mark == &m_chart.marks.back() ? "middle" : "end";
            text +=
                fmt::format(R"(<path class="mark" d="M{:.1f} {:.1f}V{:.1f}"/><text class="soft" x="{:.1f}" y="{:.1f}" )"
                            R"(text-anchor="{}">{}</text>)",
                            x, m_top - 3, bottom, x, m_top - 8, anchor, markupText(mark.name)) +
                '\n';
        }
        return text;
    }

    std::string line(const LineChart::Series& series, std::size_t index) const {
        std::string path;
        bool isDrawing = false;
        for (const LineChart::Point& point : series.points) {
            const bool isDrawable = std::isfinite(point.x) && std::isfinite(point.y);
            if (isDrawable) {
                path += fmt::format("{}{:.1f} {:.1f}", isDrawing ? "L" : "M", xPosition(point.x), yPosition(point.y));
            }
            isDrawing = isDrawable;
        }
        std::string text =
            fmt::format(R"(<path class="line s{}" data-series="{}" d="{}"/>)", index, markupText(series.name), path) +
            '\n';
        // A line of one point would not be seen.
        const std::vector<LineChart::Point>& dots = series.points.size() == 1 ? series.points : series.dots;
        for (const LineChart::Point& dot : dots) {
            if (!std::isfinite(dot.x) || !std::isfinite(dot.y)) continue;
            text += fmt::format(R"(<circle class="dot s{}" cx="{:.1f}" cy="{:.1f}" r="3"/>)", index, xPosition(dot.x),
                                yPosition(dot.y)) +
                    '\n';
        }
        return text;
    }

    // The values at the ends of the lines, moved apart where they would cover each other.
    std::string endLabels() const {
        struct Label {
            std::size_t index;
            double x;
            double y;
            std::string text;
        };
        std::vector<Label> labels;
        for (std::size_t i = 0; i < m_chart.series.size(); ++i) {
            const auto& points = m_chart.series[i].points;
            const auto last = std::find_if(points.rbegin(), points.rend(), [](const LineChart::Point& point) {
                return std::isfinite(point.x) && std::isfinite(point.y);
            });
            if (last == points.rend()) continue;
            const std::string value =
                m_chart.isLogarithmic
                    ? fmt::format("{:.1g}", last->y)
                    : number(last->y, decimalsOf(m_yStep) < 3 ? decimalsOf(m_yStep) + 1 : decimalsOf(m_yStep));
            labels.push_back({i, xPosition(last->x), yPosition(last->y), value});
        }
        std::stable_sort(labels.begin(), labels.end(), [](const Label& a, const Label& b) { return a.y < b.y; });
        constexpr double distance = 12;
        for (std::size_t i = 1; i < labels.size(); ++i) labels[i].y = std::max(labels[i].y, labels[i - 1].y + distance);
        double lowest = bottom;
        for (std::size_t i = labels.size(); i-- > 0;) {
            labels[i].y = std::min(labels[i].y, lowest);
            lowest = labels[i].y - distance;
        }
        std::string text;
        for (const Label& label : labels) {
            text += fmt::format(R"(<text class="t{}" x="{:.1f}" y="{:.1f}">{}</text>)", label.index, label.x + 6,
                                label.y + 4, label.text) +
                    '\n';
        }
        return text;
    }

    const LineChart& m_chart;
    double m_top = 0.0; ///< of the plot, below the legend
    std::string m_legend;
    Range m_x;
    Range m_y;
    double m_yStep = 1.0; ///< between two rules
};

} // namespace

std::string LineChart::svg(const std::string& attributes) const {
    return fmt::format(
               R"(<svg xmlns="http://www.w3.org/2000/svg" class="figure" id="{}" viewBox="0 0 {} {}" role="img" )"
               R"(aria-label="{}"{}>)",
               id, width, height, markupText(title + ", " + yLabel + " over " + xLabel), attributes) +
           '\n' + Drawing(*this).body() + "</svg>\n";
}

} // namespace Tools
