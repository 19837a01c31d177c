#pragma once

#include <fstream>
#include <iterator>
#include <string>

namespace Support {

/// A file's bytes; empty if it cannot be opened.
inline std::string textOfFile(const std::string& path) {
    std::ifstream stream(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(stream), {});
}

} // namespace Support
