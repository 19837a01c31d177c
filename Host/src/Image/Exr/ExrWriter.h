#pragma once

#include <string>

#include "Image/Frame.h"
#include "Image/FrameWriter.h"

namespace HostImage {

/// Writes an OpenEXR file (see writeFrame): all parts, channels and attributes. Blocks are compressed by OpenEXR's own
/// C library, except that ZIP and ZIPS go through libdeflate; the bytes do not depend on the number of threads. 8-bit
/// channels are stored as half, 16-bit integers as float unless the options say otherwise.
void writeExr(const std::string& path, const Frame& frame, const WriteOptions& options);

} // namespace HostImage
