#pragma once

#include <cstddef>
#include <nlohmann/json.hpp>

#include "Lens/CorrectionFileData.h"

namespace Tools {

/// A correction file's lens data as OpenTrackIO 1.0 samples, one per frame.
///
/// Distortion is given twice, as "Brown-Conrady D-U" (recorded to corrected position) and "Brown-Conrady U-D" (the way
/// back), each R = 1 + k1·r² + k3·r⁴ + k5·r⁶ with r in mm on the sensor; the even terms of the model are 0. The
/// fall-off is 1 − (a1·r² + a2·r⁴ + a3·r⁶). These forms have fewer terms than the plug-in's polynomials, so they are
/// fitted to its curves by least squares, from the centre to the image's corner, and the residuals are reported.
///
/// A direction's overscan is the largest factor, at least 1, by which its model enlarges a distance up to the corner.
/// Without a known recording format the last measured height stands for the corner.
struct OpenTrackIoExport {
    nlohmann::ordered_json document; ///< by Docs/schemas/opentrackio-export.json
    std::size_t failedCount = 0;     ///< frames whose curves cannot be fitted; they have no sample

    // The largest residuals of all frames; pixels are 0 without a known recording format.
    double correctedMillimetres = 0.0;
    double recordedMillimetres = 0.0;
    double correctedPixels = 0.0;
    double recordedPixels = 0.0;
    double falloffPercent = 0.0;

    explicit OpenTrackIoExport(const CorrectionFileData& file);
};

} // namespace Tools
