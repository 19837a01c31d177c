#pragma once

#include <string>
#include <vector>

#include "CorrectionData/Content.h"

namespace Tools {

/// What is implausible about one frame's fitted curves, although each number is in its range.
struct FitProblem {
    std::string kind;    ///< fixed word, the same for the same problem of every frame
    std::string message; ///< with the first values concerned
};

/// Looks at the curves that the plug-in fits for a frame, from the image centre to `imageRadius` mm (the image's
/// corner; 0: unknown, the largest measured height then), and at the heights they pass through:
///
/// - "fit-failed": no curve passes through the points, as with two equal heights; the frame cannot be corrected.
/// - "near-equal-heights": two heights closer than 0.01 mm; the curve swings between them.
/// - "huge-coefficients": a term exceeds the curve's values a thousandfold at the last height. The kernels work with
///   seven decimal digits, so the result keeps no more than four.
/// - "illumination": the curve reaches 0 % or less; the plug-in divides by it.
/// - "distortion-not-monotonic": two heights map to one position, or the order of heights is reversed.
/// - "beyond-heights": the image's corner lies more than 10 % beyond the last height, where nothing was measured.
std::vector<FitProblem> fitProblems(const CorrectionData::Frame& frame, float imageRadius);

} // namespace Tools
