#pragma once

#include <vector>

#include "Plot/ClipCurves.h"
#include "Plot/LineChart.h"

namespace Tools {

/// A lens report's charts, in its order: shading, distortion and shift over the image height, the first two over the
/// clip, the round trip over the image height, and the residuals over the clip.
std::vector<LineChart> lensCharts(const ClipCurves& clip);

} // namespace Tools
