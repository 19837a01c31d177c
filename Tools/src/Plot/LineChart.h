#pragma once

#include <string>
#include <vector>

namespace Tools {

/// A chart of up to four lines as SVG text: axes with units, a legend, and each line's last value beside its end.
///
/// The text depends on the values only, not on locale or machine. Points that are not finite interrupt their line.
struct LineChart {
    struct Point {
        double x = 0.0;
        double y = 0.0;
    };

    struct Series {
        std::string name;
        std::vector<Point> points;
        std::vector<Point> dots = {}; ///< measured values, drawn as rings
    };

    /// A vertical line at a place of interest.
    struct Mark {
        double x = 0.0;
        std::string name;
    };

    static constexpr int width = 400;
    static constexpr int height = 300;

    std::string id; ///< of the figure, for links and tests
    std::string title;
    std::string xLabel; ///< with unit
    std::string yLabel; ///< with unit
    std::vector<Series> series;
    std::vector<Mark> marks = {};
    bool isLogarithmic = false; ///< the y axis; values of 0 or less are drawn at its lower end
    bool hasWholeX = false;     ///< x values are whole numbers, such as frames

    /// An <svg> element with `attributes` added, such as a place within another one.
    std::string svg(const std::string& attributes = "") const;
};

} // namespace Tools
