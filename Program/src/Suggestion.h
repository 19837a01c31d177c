#pragma once

#include <string>
#include <vector>

namespace Program {

/// `; did you mean "NAME"?` with the known name closest to a misspelt one, by the count of letters that are wrong,
/// missing, extra, or swapped with their neighbour; empty if none is close: at most one such slip in three letters. Of
/// several equally close names, the first.
std::string suggestionFor(const std::string& misspelt, const std::vector<std::string>& known);

} // namespace Program
