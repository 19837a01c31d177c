#pragma once

#include <string>

namespace Host {

/// Writes a text file whole or not at all. Throws Failure (Output).
void writeTextFile(const std::string& path, const std::string& text);

} // namespace Host
