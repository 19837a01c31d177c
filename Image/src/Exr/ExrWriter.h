#pragma once

#include <string>

#include "Frame.h"
#include "FrameWriter.h"

namespace Image {

/// Writes an OpenEXR file (see writeFrame): all parts, channels and attributes. Blocks are compressed by OpenEXR's own
/// libraries, except ZIP and ZIPS; the bytes do not depend on the number of threads.
void writeExr(const std::string& path, const Frame& frame, const WriteOptions& options);

/// How it stores samples of that type: 8-bit ones as half, 16-bit integers as float unless the options say otherwise.
/// Throws ImageError for a wanted type that OpenEXR does not have.
PixelType exrStoredType(const std::string& path, PixelType type, const WriteOptions& options);

} // namespace Image
