#pragma once

#include <string>

#include "Farm/FarmJob.h"

namespace Tools {

/// A job's description for OpenCue, in its XML layout of version 1.15: a layer that fills the kernel cache, one that
/// renders the frames in chunks and depends on the first, and one that sums up after the job.
struct OpenCueJob {
    std::string show;
    std::string shot;
    std::string user;

    /// The job must have been written; the commands refer to its folder.
    std::string xml(const FarmJob& job) const;
};

} // namespace Tools
