#pragma once

#include <optional>
#include <string>

#include "Inspect/InfoReport.h"

namespace Host {

/// How the plug-in would correct every frame of a correction file, looked at without its clip. `manualFormat` takes
/// precedence over what the file implies. Throws Failure (WrongUse) when the file cannot be read or parsed.
InfoReport fileInfo(const std::string& path, std::optional<RecordingFormatDatabase::RecordingFormat> manualFormat);

} // namespace Host
