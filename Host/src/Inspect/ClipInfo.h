#pragma once

#include <optional>
#include <string>

#include "Frames/FrameRange.h"
#include "Inspect/InfoReport.h"
#include "Render/RenderOptions.h"

namespace Host {

/// How the nodes would undistort the frames of a clip: behind a reader node as for a render job, asked for what they
/// would tell the core. Headers are read, no pixels; without an OpenCL device all but the nodes' own box is known.
///
/// Uses these options: correction file, recording format, overscan and frames; without frames, all that exist. A frame
/// that cannot be read is a failed frame. Throws Failure (WrongUse) when there is no such clip, and when the correction
/// file cannot be read.
InfoReport clipInfo(const RenderOptions& options);

} // namespace Host
