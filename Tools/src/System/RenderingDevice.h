#pragma once

#include <string>

#include "System/KernelCache.h"

namespace Tools {

/// Whether the chosen OpenCL device renders, tested in another process.
///
/// A driver whose kernel cache is corrupt or whose disk is full kills the process it is loaded into, so the test cannot
/// run in the process that reports it. The other process is this program with a hidden option; it builds and runs every
/// kernel once, which also fills the cache.
struct RenderProbe {
    bool isRendering = false;
    std::string reason; ///< why not: how the process ended, and the last lines that it wrote

    /// Runs the test and waits for it to end. A folder, if given, is its kernel cache.
    static RenderProbe run(const std::string& cacheFolder = {});

    /// What the other process does: builds and runs the kernels on the most powerful device, and checks the result.
    /// Throws the core's Exception, or Failure (Environment) when the device renders wrong pixels.
    static void renderHere();
};

/// Prepares the process for rendering, and says what to do when there is no device to render on.
///
/// One object per process, made before the first thread and the first OpenCL call.
class RenderingDevice {
public:
    /// Prepares memory, drivers and kernel cache. A name, if given, chooses the device as the environment variable
    /// OpenCLKernelHelper::deviceVariable does, for this process and those that it starts. Throws Failure
    /// (Environment).
    explicit RenderingDevice(const std::string& name = {});

    /// What the user should know of the kernel cache (KernelCache::notice); mostly empty.
    std::string notice() const { return m_cache.notice(); }

    /// PoCL's kernel cache.
    const KernelCache& cache() const { return m_cache; }

    /// Throws Failure (Environment) when there is no OpenCL device. Separate, so that a command can report errors in
    /// its input first.
    void check() const;

private:
    KernelCache m_cache;
};

} // namespace Tools
