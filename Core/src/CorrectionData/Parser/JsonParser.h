#pragma once

#include <string>

#include "CorrectionData/Content.h"

namespace CorrectionData {

/// Reads the correction record that a frame carries in its metadata, a JSON object.
///
/// Reads recordingFormat.camera.{manufacturer,model}, recordingFormat.clipResolution.{width,height} (px),
/// recordingFormat.imageRadius (mm) and the arrays frameData.interpolationPoints.{heights,shading,radialDistortion} of
/// 6 or 7 numbers each; other keys are ignored, and numbers may be quoted. The arrays may differ in length.
class JsonParser {
public:
    /// Sets the header's camera, clip size and sensor width, and the frame's three lists; all other fields have their
    /// defaults. The sensor width is imageRadius ÷ (half the diagonal in px) × width: about 26.54 mm for 4096 × 2160 px
    /// and 15 mm.
    ///
    /// Throws Exception "JSON metadata string has an invalid format." if the text is invalid, longer than 1 MiB or
    /// nested deeper than 64 levels, leaving both records untouched, and std::bad_alloc if memory runs out. Independent
    /// of the process's locale. Any thread.
    static void parse(const std::string& json, Header& header, Frame& frame);
};

} // namespace CorrectionData
