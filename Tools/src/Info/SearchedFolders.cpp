#include "Info/SearchedFolders.h"

#include <fmt/format.h>

namespace Tools {

std::vector<std::string> shortListOf(const std::vector<std::string>& searchedFolders) {
    constexpr std::size_t mostFolders = 10;
    if (searchedFolders.size() <= mostFolders) return searchedFolders;
    std::vector<std::string> lines(searchedFolders.begin(), searchedFolders.begin() + mostFolders);
    lines.push_back(
        fmt::format("and {} more; \"lenscorrect find --all\" lists them", searchedFolders.size() - mostFolders));
    return lines;
}

} // namespace Tools
