#include "ExitCode.h"

#include <algorithm>

#include "System/Interruption.h"

namespace Program {

using Tools::Failure;
using Tools::JobResult;

ExitCode exitCodeOf(Failure::Kind kind) {
    switch (kind) {
        case Failure::Kind::Environment:
            return ExitCode::Environment;
        case Failure::Kind::Output:
            return ExitCode::Output;
        case Failure::Kind::WrongUse:
        case Failure::Kind::Correction:
            break;
    }
    return ExitCode::WrongUse;
}

ExitCode exitCodeOf(const JobResult& result) {
    if (result.isInterrupted) return exitCodeOfSignal();
    const bool hasOutputFailed =
        std::any_of(result.failed.begin(), result.failed.end(),
                    [](const JobResult::FailedFrame& frame) { return frame.kind == Failure::Kind::Output; });
    if (hasOutputFailed) return ExitCode::Output;
    return result.failed.empty() ? ExitCode::Done : ExitCode::SomeFramesFailed;
}

ExitCode exitCodeOfSignal() { return static_cast<ExitCode>(Tools::Interruption::exitStatus()); }

} // namespace Program
