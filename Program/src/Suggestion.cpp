#include "Suggestion.h"

#include <algorithm>
#include <cstddef>

namespace Program {

namespace {

/// Optimal string alignment: a letter takes part in one swap at most.
std::size_t slipsBetween(const std::string& a, const std::string& b) {
    std::vector<std::vector<std::size_t>> slips(a.size() + 1, std::vector<std::size_t>(b.size() + 1));
    for (std::size_t i = 0; i <= a.size(); ++i) {
        for (std::size_t j = 0; j <= b.size(); ++j) {
            if (i == 0 || j == 0) {
                slips[i][j] = i + j;
                continue;
            }
            slips[i][j] = std::min(
                {slips[i - 1][j] + 1, slips[i][j - 1] + 1, slips[i - 1][j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1)});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1])
                slips[i][j] = std::min(slips[i][j], slips[i - 2][j - 2] + 1);
        }
    }
    return slips[a.size()][b.size()];
}

} // namespace

std::string suggestionFor(const std::string& misspelt, const std::vector<std::string>& known) {
    constexpr std::size_t longest = 64; // no name of ours is; the work grows with the square
    if (misspelt.size() > longest) return {};
    const std::string* nearest = nullptr;
    std::size_t fewest = std::max<std::size_t>(1, misspelt.size() / 3) + 1;
    for (const std::string& name : known) {
        const std::size_t slips = slipsBetween(misspelt, name);
        if (slips >= fewest) continue;
        fewest = slips;
        nearest = &name;
    }
    return nearest ? "; did you mean \"" + *nearest + "\"?" : "";
}

} // namespace Program
