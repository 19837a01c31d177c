#pragma once

#include <stdexcept>
#include <string>

#include "Report/ExitCode.h"

namespace Tools {

/// Ends a command: carries the exit status, and a text for the error stream that says what is wrong and what to do
/// next.
class Failure : public std::runtime_error {
public:
    Failure(ExitCode exitCode, const std::string& what);
    ~Failure() override;

    ExitCode exitCode() const noexcept { return m_exitCode; }

private:
    ExitCode m_exitCode;
};

/// Throws the failure of a command that was not used as it is meant (ExitCode::WrongUse).
[[noreturn]] void refuse(const std::string& what);

} // namespace Tools
