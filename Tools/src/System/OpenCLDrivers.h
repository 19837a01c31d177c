#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace Tools {

/// An OpenCL driver of this machine: what OpenCL calls a platform.
struct OpenCLDriver {
    /// The value of an environment variable, or null.
    using Variable = std::function<const char*(const char*)>;

    std::string name;    ///< as it calls itself, such as "Portable Computing Language" (PoCL) or "rusticl"
    std::string version; ///< likewise
    std::size_t deviceCount = 0;

    /// Every driver, in the loader's order. Empty if there is none; a driver that does not tell its name is left out.
    /// Asks the drivers: a KernelCache comes first.
    static std::vector<OpenCLDriver> all();

    /// Where it keeps compiled kernels, as its own documents say; empty if that is not known.
    std::string kernelCache(const Variable& variable) const;

    /// Why it has no device, and what to do; empty if it has one.
    std::string problem(const Variable& variable) const;
};

} // namespace Tools
