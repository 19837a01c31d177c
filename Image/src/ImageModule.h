#pragma once

#include "Frame.h"
#include "FrameReader.h"
#include "FrameWriter.h"
#include "MemoryFile.h"

namespace Image {

/// The entry points of a reader module: a shared library of the program's own that is loaded when a file first needs
/// it, because what it links against takes longer to load than the program's other work. Functions throw ImageError.
///
/// A module defines the first or both of these with C linkage under the names "orvexOpenReader" and "orvexEncodeFrame".
using OpenModuleReader = FrameReader* (*)(const std::string& path, const Limits& limits);
using EncodeModuleFrame = void (*)(const std::string& path, const Frame& frame, const WriteOptions& options,
                                   MemoryFile& file);

/// The function `function` of the module `name`, which is loaded from "../lib/orvex" beside the program's folder or
/// from the installation's own. Throws ImageError naming `path` if the module or the function is missing. Any thread.
void* moduleFunction(const std::string& path, const char* name, const char* function);

} // namespace Image
