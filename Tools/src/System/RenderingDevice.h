#pragma once

#include "System/KernelCache.h"

namespace Tools {

/// Prepares the process for rendering, and says what to do when there is no device to render on.
///
/// One object per process, made before the first thread and the first OpenCL call.
class RenderingDevice {
public:
    /// Prepares memory, drivers and kernel cache; a notice about the cache goes to the error stream. Throws Failure
    /// (Environment).
    RenderingDevice();

    /// Throws Failure (Environment) when there is no OpenCL device. Separate, so that a command can report errors in
    /// its input first.
    void check() const;

private:
    KernelCache m_cache;
};

} // namespace Tools
