#pragma once

#include <cstdint>

namespace CorrectionFile {

/// How far around a clip's folder to search for a correction file, in levels of folders.
struct LevelOfDepth {
    std::uint8_t subdirectoryDepth = 0;       ///< below the clip's folder; 1: its immediate subfolders only
    std::uint8_t parentDirectoryCount = 0;    ///< ancestors of the clip's folder, nearest first
    std::uint8_t parentSubdirectoryDepth = 0; ///< below each ancestor
};

} // namespace CorrectionFile
