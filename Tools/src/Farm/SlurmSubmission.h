#pragma once

#include <string>
#include <vector>

#include "Farm/FarmJob.h"

namespace Tools {

/// Hands a job to Slurm, through its program sbatch, as three jobs that depend on each other:
/// - one task that compiles the OpenCL kernels into the cache, so that the tasks do not all compile them at once;
/// - an array with one task per chunk, when that has succeeded; a task that is stopped is put back into the queue;
/// - the summary, when all tasks have ended, whether they succeeded or not.
class SlurmSubmission {
public:
    unsigned int tasksAtOnce = 0;     ///< 0: as many as the farm has room for
    std::vector<std::string> options; ///< passed to every sbatch as they are

    /// Throws Failure (Environment) on a machine without Slurm's programs.
    static void checkPrograms();

    /// Number of tasks that an array may have, as Slurm is configured; its default if it cannot be asked.
    static std::size_t maximumArraySize();

    /// Slurm's numbers of the first two jobs.
    struct Numbers {
        std::string warm, chunks;
    };

    /// Submits the first two jobs of one that has been written. Throws Failure (Environment) if sbatch refuses, and
    /// cancels what was submitted before.
    Numbers submit(const FarmJob& job) const;

    /// Submits the summary, which goes to the job's summaryPath, and answers 0; with `wait`, returns once it has ended,
    /// and answers its exit status. Likewise.
    int submitSummary(const FarmJob& job, const Numbers& numbers, bool wait) const;

private:
    std::string sbatch(const FarmJob& job, const char* step, const std::vector<std::string>& wanted,
                       const std::vector<std::string>& submitted, int* status = nullptr) const;
};

} // namespace Tools
