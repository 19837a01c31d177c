#pragma once

#include <string>

#include "Text/lowerCase.h"

namespace Image {

/// "exr" for "a/b.EXR"; "" for a name without one.
inline std::string fileExtension(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    const std::size_t dot = path.rfind('.');
    if (dot == std::string::npos || (slash != std::string::npos && dot < slash)) return {};
    return Text::lowerCase(path.substr(dot + 1));
}

} // namespace Image
