#pragma once

#include <string>

#include "Lens/LensCurves.h"

namespace Tools {

/// A grid of straight lines of the scene before and after the correction, as <svg> elements of a LineChart's size. A
/// small distortion is drawn larger than it is, and a note says so.
class GridFigure {
public:
    /// `curves` must outlive this; `name` is that of their frame. `aspect` is the image's width by its height, `radius`
    /// the distance of its corner in mm.
    GridFigure(const LensCurves& curves, std::string name, double aspect, float radius);

    /// The grid bent as it is recorded. `attributes` are added to the element.
    std::string recorded(const std::string& attributes) const;

    /// The grid straight again, and the recorded border around it.
    std::string corrected(const std::string& attributes) const;

private:
    std::string note() const;

    const LensCurves& m_curves;
    std::string m_name;
    double m_width;  ///< mm
    double m_height; ///< mm
    double m_enlarged = 1;
};

} // namespace Tools
