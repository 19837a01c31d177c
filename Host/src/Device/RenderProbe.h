#pragma once

#include <string>

namespace Host {

/// Whether the chosen OpenCL device renders, tried in another process.
///
/// A driver whose kernel cache is corrupt or whose disk is full ends the process it is loaded into, so the trial cannot
/// be made in the process that wants to report it. The other process is this program with a hidden option; it builds
/// and runs every kernel once, which also fills the cache.
struct RenderProbe {
    bool isRendering = false;
    std::string reason; ///< why not: how the process ended, and the last lines that it wrote

    /// Starts the trial and waits for its end. With a folder, that one is the trial's kernel cache.
    static RenderProbe run(const std::string& cacheFolder = {});

    /// What the other process does: builds and runs the kernels on the most powerful device, and checks the result.
    /// Throws the core's Exception, or Failure (Environment) when the device renders something else than it should.
    static void renderHere();
};

} // namespace Host
