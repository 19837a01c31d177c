#pragma once

#include <string>

namespace CLI {
class App;
}

namespace Program {

/// The manual page of a program and all its sub-commands, in the man macros of roff. Hidden options are left out. It is
/// the same on every machine and day, so that builds are reproducible.
std::string manPage(const CLI::App& program);

} // namespace Program
