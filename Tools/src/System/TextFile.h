#pragma once

#include <string>

namespace Tools {

/// Writes a text file whole or not at all. Throws Failure (Output).
void writeTextFile(const std::string& path, const std::string& text);

/// Throws Failure (WrongUse) if `output` is `input`, also by another name: a result must not replace what it is made
/// of.
void refuseToReplace(const std::string& input, const std::string& output);

} // namespace Tools
