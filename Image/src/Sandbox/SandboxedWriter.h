#pragma once

#include <string>

#include "FrameWriter.h"
#include "Sandbox/SandboxLimits.h"

namespace Image {

/// writeFrame, but a still other than OpenEXR is encoded by a process of its own (CodecProcess), with no more than the
/// limits: whatever happens to that process, this one goes on, and no file is made. The same bytes. Pixels are copied
/// once into shared memory; the file comes back in shared memory and is written by this process. Throws ImageError,
/// also when the process was ended by a signal or took longer than it may. Any thread.
///
/// `program`: the program whose main function begins with CodecProcess; else this very one.
void writeFrameSandboxed(const std::string& path, const Frame& frame, const WriteOptions& options,
                         const SandboxLimits& sandbox, const std::string& program = "/proc/self/exe");

} // namespace Image
