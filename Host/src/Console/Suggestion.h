#pragma once

#include <string>
#include <vector>

namespace Host {

/// `; did you mean "NAME"?` with the known name that a misspelt one is nearest to, by the count of letters that are
/// wrong, missing, too many, or swapped with their neighbour; empty if none is near: at most one such slip in three
/// letters. The first of several that are equally near.
std::string suggestionFor(const std::string& misspelt, const std::vector<std::string>& known);

} // namespace Host
