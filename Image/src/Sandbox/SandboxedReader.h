#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "FrameReader.h"
#include "Sandbox/FrameMessage.h"
#include "Sandbox/SandboxLimits.h"

namespace Image {

/// Reads a file that is not trusted. Every call has the file decoded in a separate process (CodecProcess), which may
/// use no more than the limits, write no file, start no program and open no connection; whatever happens to that
/// process, this one continues. What comes back is checked as if the other process were hostile.
///
/// Processes are copies of a CodecServer; where that fails, and with another program, each starts from scratch.
/// Pixels come through shared memory and are copied once.
class SandboxedReader : public FrameReader {
public:
    /// Opens nothing yet. `program`: the program whose main function begins with CodecProcess; else this very one.
    SandboxedReader(const std::string& path, const Limits& limits, const SandboxLimits& sandbox,
                    const std::string& program = "/proc/self/exe");

    /// Unlike other readers', reads the file and throws ImageError, unless readHeader has told it already.
    std::int64_t frameCount() const override;
    Frame readHeader(std::int64_t index = 0) override;
    /// Besides other readers' errors, ImageError when the process was killed by a signal, exceeded its time limit, or
    /// returned something that is not a frame within the limits.
    void readPixels(Frame& frame, unsigned threads = 1, std::int64_t index = 0) override;

private:
    FrameMessage headerMessage(std::int64_t index) const;

    std::string m_path;
    Limits m_limits;
    SandboxLimits m_sandbox;
    std::string m_program;
    std::optional<std::int64_t> m_frameCount; ///< once a header was read
};

} // namespace Image
