#pragma once

#include <string>

#include "CorrectionData/Content.h"

namespace CorrectionData {

/// Reads the correction record that a frame carries in its metadata, a JSON object.
///
/// Read are recordingFormat.camera.{manufacturer,model}, recordingFormat.clipResolution.{width,height} (px),
/// recordingFormat.imageRadius (mm) and the arrays frameData.interpolationPoints.{heights,shading,radialDistortion} of
/// 6 or 7 numbers each; other keys are ignored, numbers may stand in quotes. The arrays may differ in length.
class JsonParser {
public:
    /// Fills the header's camera, clip size and sensor width, the last as imageRadius ÷ (half the diagonal in px) ×
    /// width (4096 × 2160 px with 15 mm: about 26.54 mm), and the frame's three lists; every other field is default.
    ///
    /// Throws Exception "JSON metadata string has an invalid format." with both records untouched, also when the text
    /// is longer than 1 MiB or nested deeper than 64 levels, and std::bad_alloc. Independent of the process's locale.
    /// Any thread.
    static void parse(const std::string& json, Header& header, Frame& frame);
};

} // namespace CorrectionData
