#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "Clip/FrameFiles.h"
#include "Render/RenderOptions.h"

namespace Tools {

/// One frame of a render job.
struct FrameJob {
    std::int32_t frame = 0;
    std::string input; ///< empty: the frame was asked for and does not exist, which fails this frame only
    std::string output;
};

/// The frames of a job in the order asked for, or ascending. `available` maps the frames that exist to their files; for
/// a movie, every frame to the same file.
///
/// Throws Failure (WrongUse) when none of the frames exists; when several frames have one output file; when an output
/// would replace its own input; and when an output exists though neither --overwrite nor --skip-existing was given.
std::vector<FrameJob> frameJobs(const RenderOptions& options, const std::map<std::int32_t, std::string>& available);

} // namespace Tools
