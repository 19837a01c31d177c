#pragma once

#include <string>
#include <vector>

namespace Tools {

/// A word that a POSIX shell reads as exactly this text, whatever is in it.
std::string shellQuoted(const std::string& text);

/// Several of them, separated by blanks.
std::string shellQuoted(const std::vector<std::string>& texts);

} // namespace Tools
