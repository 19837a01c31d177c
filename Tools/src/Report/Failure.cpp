#include "Report/Failure.h"

namespace Tools {

Failure::Failure(ExitCode exitCode, const std::string& what) : std::runtime_error(what), m_exitCode(exitCode) {}

Failure::~Failure() = default;

void refuse(const std::string& what) { throw Failure(ExitCode::WrongUse, what); }

} // namespace Tools
