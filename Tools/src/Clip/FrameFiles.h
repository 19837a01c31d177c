#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "Clip/FilePattern.h"

namespace Tools {

/// The files that a clip's path names on disk: every frame of a sequence, or the one file.
struct FrameFiles {
    FilePattern pattern;                       ///< without a placeholder exactly when one file was named
    std::map<std::int32_t, std::string> files; ///< path of each frame that exists; never empty

    /// Looks the clip up on disk. `clip` is
    /// - the name of an existing file (also one whose name has pattern signs): its frame number is the number that ends
    ///   its name's stem after ".", "_" or "-" (plate.1001.exr: 1001), else 1;
    /// - a pattern: every file of its folder that fits, whatever its count of digits;
    /// - a folder: its only sequence of picture files. Hidden files and other kinds of files do not count.
    ///
    /// Throws Failure (WrongUse) when nothing is there, when a folder holds several sequences (naming them), and when
    /// two files have the same frame number (naming both).
    static FrameFiles find(const std::string& clip);

    /// Whether the file's name has the extension of a picture format, in any case of letters.
    static bool isPicture(const std::string& file);
};

} // namespace Tools
