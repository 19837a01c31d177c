#pragma once

#include <cstdint>

namespace Image {

/// What a process that decodes or encodes one frame may use; less where this process's own limits are lower.
struct SandboxLimits {
    std::uint64_t memory = std::uint64_t{8} << 30; ///< bytes of address space
    unsigned seconds = 60;                         ///< of wall-clock time, and of processor time for each thread
    /// Whether it is an error if the system cannot forbid what decoding does not need; otherwise the file is still
    /// decoded or encoded in a separate process.
    bool isRequired = true;
};

} // namespace Image
