#pragma once

#include <CL/cl.h>

#include <cstddef>
#include <cstdint>
#include <string>

namespace Renderer {

/// The properties of an OpenCL device that decide the choice, and what tells it from others.
struct OpenCLDeviceInfo {
    cl_device_id id = nullptr;
    std::string name;
    std::uint64_t type = 0; ///< bit field CL_DEVICE_TYPE_…
    std::string vendor;
    std::uint32_t maxComputeUnits = 0;
    std::uint32_t maxClockFrequency = 0; ///< MHz
    std::size_t maxWorkGroupSize = 0;
    std::uint64_t score = 0; ///< compute units × work-group size × clock frequency
    std::string platform;    ///< its driver's name; empty if the driver does not tell
    bool isNamed = false;    ///< whether ORVEX_OPENCL_DEVICE names it
};

} // namespace Renderer
