#pragma once

#include <optional>
#include <string>

#include "Chain/LensDataOptions.h"
#include "Clip/DecodingOptions.h"
#include "Clip/FrameRange.h"
#include "Info/InfoReport.h"

namespace Tools {

/// Of which frames `info` is wanted.
struct InfoOptions : LensDataOptions {
    std::string path;                 ///< a clip, or a correction file
    std::optional<FrameRange> frames; ///< without it, all that exist
    DecodingOptions decoding;         ///< of a clip
};

/// How the nodes would undistort the frames of a clip: behind a reader node as for a render job, asked for what they
/// would tell the core. Headers are read, no pixels; without an OpenCL device all but the nodes' own box is known.
///
/// A frame that cannot be read is a failed frame. Throws Failure (WrongUse) when there is no such clip, and when the
/// correction file cannot be read.
InfoReport clipInfo(const InfoOptions& options);

} // namespace Tools
