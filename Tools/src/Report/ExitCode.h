#pragma once

namespace Tools {

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

} // namespace Tools
