#pragma once

#include <array>

#include "Report/Failure.h"
#include "Report/JobRecord.h"

namespace Program {

/// What the program's exit status says to a person or a render farm; `exitStatuses` has the meanings. A farm should
/// retry Environment and Output, but not WrongUse.
enum class ExitCode : int {
    Done = 0,
    SomeFramesFailed = 1,
    WrongUse = 2,
    Environment = 3,
    Output = 4,
    Interrupted = 130,
    Terminated = 143,
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
