#pragma once

#include <string>

namespace HostImage {

/// "exr" for "a/b.EXR"; "" for a name without one.
inline std::string fileExtension(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    const std::size_t dot = path.rfind('.');
    if (dot == std::string::npos || (slash != std::string::npos && dot < slash)) return {};
    std::string extension = path.substr(dot + 1);
    for (char& letter : extension)
        if (letter >= 'A' && letter <= 'Z') letter = static_cast<char>(letter - 'A' + 'a');
    return extension;
}

} // namespace HostImage
