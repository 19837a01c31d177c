#pragma once

#include <cstdint>

namespace HostImage {

/// What a process that decodes an untrusted file may use for one frame.
struct SandboxLimits {
    std::uint64_t memory = std::uint64_t{8} << 30; ///< bytes of address space
    unsigned seconds = 60;                         ///< of wall-clock time, and of processor time for each thread
    /// Whether it is an error if the system cannot forbid what decoding does not need; otherwise the file is still
    /// decoded in a separate process.
    bool isRequired = true;
};

} // namespace HostImage
