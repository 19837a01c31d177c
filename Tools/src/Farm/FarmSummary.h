#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace Tools {

/// What became of the frames of a farm job, read from its folder; also while the job still runs.
struct FarmSummary {
    std::size_t total = 0;
    std::size_t done = 0;                       ///< written, or already there
    std::map<std::int32_t, std::string> failed; ///< and why
    std::vector<std::int32_t> withoutResult;    ///< never started, or interrupted, or the file is gone
    std::map<std::string, int> failedSteps;     ///< steps whose last start ended with a status other than 0

    /// Throws Failure (WrongUse) if the folder is not that of a job.
    static FarmSummary read(const std::string& folder);

    /// That of `lenscorrect summary`: 0 if every frame is done; else the largest from 1 to 4 with which a step ended,
    /// at least 1, that of a job some of whose frames failed.
    int exitStatus() const;

    /// For a person: the counts, then every failed frame with its reason.
    std::string text() const;

    /// {"total", "done", "failed": [{"frame", "message"}], "withoutResult": "list", "failedSteps": {"name": status},
    /// "exitCode"}
    std::string json() const;
};

} // namespace Tools
