#pragma once

#include <optional>
#include <string>

#include "Clip/FrameRange.h"
#include "Info/InfoReport.h"

namespace Tools {

/// How the plug-in would correct every frame of a correction file, looked at without its clip. `manualFormat` takes
/// precedence over what the file implies. With a range only its frames are reported, in its order; one without a record
/// of its own gets the one before it, as when it is rendered. Throws Failure (WrongUse) when the file cannot be read or
/// parsed, and for a negative frame.
InfoReport fileInfo(const std::string& path, std::optional<RecordingFormatDatabase::RecordingFormat> manualFormat,
                    const std::optional<FrameRange>& range);

} // namespace Tools
