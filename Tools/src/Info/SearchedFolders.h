#pragma once

#include <string>
#include <vector>

namespace Tools {

/// The folders that were searched for a correction file, as a person reads them: ten, and a last line that counts the
/// others. Any thread.
std::vector<std::string> shortListOf(const std::vector<std::string>& searchedFolders);

} // namespace Tools
