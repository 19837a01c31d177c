#pragma once

#include <optional>
#include <string>

#include "Chain/ChainSettings.h"
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

/// How the plug-in would correct every frame of a correction file, looked at without its clip. `manualFormat` takes
/// precedence over what the file implies. With a range only its frames are reported, in its order; one without a record
/// of its own gets the one before it, as when it is rendered. Throws Failure (WrongUse) when the file cannot be read or
/// parsed, and for a negative frame.
InfoReport fileInfo(const std::string& path, std::optional<RecordingFormatDatabase::RecordingFormat> manualFormat,
                    const std::optional<FrameRange>& range);

} // namespace Tools
