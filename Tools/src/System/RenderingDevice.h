#pragma once

#include <string>

#include "System/KernelCache.h"

namespace Tools {

/// Prepares the process for rendering, and says what to do when there is no device to render on.
///
/// One object per process, made before the first thread and the first OpenCL call.
class RenderingDevice {
public:
    /// Prepares memory, drivers and kernel cache. Throws Failure (Environment).
    RenderingDevice() = default;

    /// What the user should know of the kernel cache (KernelCache::notice); mostly empty.
    std::string notice() const { return m_cache.notice(); }

    /// Throws Failure (Environment) when there is no OpenCL device. Separate, so that a command can report errors in
    /// its input first.
    void check() const;

private:
    KernelCache m_cache;
};

} // namespace Tools
