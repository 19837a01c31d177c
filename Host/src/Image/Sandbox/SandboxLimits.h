#pragma once

#include <cstdint>

namespace HostImage {

/// What a process that decodes an untrusted file may use for one frame.
struct SandboxLimits {
    std::uint64_t memory = std::uint64_t{8} << 30; ///< bytes of address space
    unsigned seconds = 60;                         ///< by the clock, and for each thread on the processor
    /// Whether a system that cannot forbid what decoding does not need is an error; else the file is decoded there by a
    /// process of its own all the same.
    bool isRequired = true;
};

} // namespace HostImage
