#pragma once

#include <string>

namespace CLI {
class App;
}

namespace Program {

/// A script for bash that completes the program's commands, their options, the words that an option accepts, and file
/// names wherever a value or a positional is wanted. Hidden options are left out. Loaded by bash-completion, or with
/// `source`.
std::string bashCompletion(const CLI::App& program);

} // namespace Program
