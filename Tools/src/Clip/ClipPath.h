#pragma once

#include <string>

#include "Clip/FrameFiles.h"

namespace Tools {

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
