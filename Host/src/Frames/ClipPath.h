#pragma once

#include <string>

#include "Frames/FrameFiles.h"

namespace Host {

/// The path under which a clip's correction file is searched: absolute, and for the frames of an EXR or DPX sequence
/// the folder with the part of the file's name before its first "." (/shots/A001C002.0001234.exr: /shots/A001C002).
/// Every other clip is searched under its file's own path. No metadata of the clip is looked at.
std::string clipFilePath(const FrameFiles& clip);

} // namespace Host
