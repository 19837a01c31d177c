#pragma once

#include <array>

#include "Report/Failure.h"
#include "Report/JobRecord.h"

namespace Program {

/// What the program's exit status says to a person or a render farm. A farm should retry 3 and 4, but not 2.
enum class ExitCode : int {
    Done = 0,             ///< every frame was written or was already there
    SomeFramesFailed = 1, ///< the others are written; the failed ones are listed
    WrongUse = 2,         ///< options, ranges, patterns or input files are not usable
    Environment = 3,      ///< no OpenCL device, or its kernel cache cannot be used
    Output = 4,           ///< output could not be written
    Interrupted = 130,    ///< stopped by SIGINT; no partial file is left under a final name
    Terminated = 143,     ///< the same by SIGTERM
};

/// The program's exit statuses and their meanings, as the manual page lists them.
struct ExitStatus {
    const char* numbers;
    const char* meaning;
};
inline constexpr std::array exitStatuses{
    ExitStatus{"0", "Success: every frame was written or was already finished."},
    ExitStatus{"1", "Some frames failed and are listed; the others are written."},
    ExitStatus{"2", "Usage error: unusable options, frame ranges, patterns or input files."},
    ExitStatus{"3", "No OpenCL device, or unusable kernel cache."},
    ExitStatus{"4", "Output could not be written."},
    ExitStatus{"130, 143", "Stopped by SIGINT or SIGTERM; no partial file has a final name."},
};

/// The status of a program that a failure ends.
ExitCode exitCodeOf(Tools::Failure::Kind kind);

/// The status after a job that came to its end, or was stopped.
ExitCode exitCodeOf(const Tools::JobResult& result);

/// The status of a program that a signal has stopped (Interruption), by the shells' rule.
ExitCode exitCodeOfSignal();

} // namespace Program
