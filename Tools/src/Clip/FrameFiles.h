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

/// The path from which a clip's correction file is searched for: absolute, and for pictures of every format the folder
/// with the clip's name, without frame number and extension. The clip's metadata play no part.
///
/// | Files                                        | Path                        |
/// |----------------------------------------------|-----------------------------|
/// | `/shots/A001C002.%07d.exr`                   | `/shots/A001C002`           |
/// | `/shots/A001.graded.%04d.tif`                | `/shots/A001`               |
/// | `/shots/plate_%04d.png`, `plate-%04d.png`    | `/shots/plate`              |
/// | `/shots/%04d.dpx`                            | the first file's: `/shots/0001` |
/// | one picture, `/shots/plate.0001.jpg`         | `/shots/plate`              |
/// | anything else, `/shots/A001C002.mov`         | `/shots/A001C002.mov`       |
std::string clipFilePath(const FrameFiles& clip);

/// The path under which a reader shows every frame of the clip to the nodes, so that they arrive at clipFilePath: the
/// nodes recognise an image sequence only by the extensions "exr" and "dpx", and use what precedes the first ".".
/// DPX files keep their extension, all other pictures are shown as EXR (`/shots/A001.exr`); anything else as it is.
std::string shownClipPath(const FrameFiles& clip);

} // namespace Tools
