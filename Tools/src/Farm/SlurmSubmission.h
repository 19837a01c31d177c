#pragma once

#include <string>
#include <vector>

#include "Farm/FarmJob.h"
#include "Report/ExitCode.h"

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

    /// The job must have been written. Prints the numbers of the three jobs; with `wait` also the summary, once that
    /// has ended, and answers its status. Throws Failure (Environment) if sbatch refuses, and cancels what was
    /// submitted before.
    ExitCode submit(const FarmJob& job, bool wait) const;
};

} // namespace Tools
