#pragma once

#include "ExitCode.h"

namespace Program {

/// The whole program: finds the sub-command, parses its options, runs it, and turns every failure into one message on
/// the error stream and an exit status.
ExitCode runCommandLine(int argumentCount, const char* const* arguments);

} // namespace Program
