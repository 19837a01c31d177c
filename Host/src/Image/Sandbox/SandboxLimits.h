#pragma once

#include <cstdint>

namespace HostImage {

/// What a process that decodes an untrusted file may use for one frame.
struct SandboxLimits {
    std::uint64_t memory = std::uint64_t{8} << 30; ///< bytes of address space
    unsigned seconds = 60;                         ///< by the clock, and for each thread on the processor
};

} // namespace HostImage
