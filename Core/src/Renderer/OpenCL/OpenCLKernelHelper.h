#pragma once

#include <CL/cl.h>

#include <string>
#include <vector>

#include "Renderer/OpenCL/OpenCLDeviceInfo.h"

namespace Renderer {

/// Queries the OpenCL runtime and chooses the device that renders.
///
/// Stateless: every call queries the runtime again. Every failure is an Exception of one sentence with the OpenCL
/// status, for example "Failed to query number of all available platforms! (-1001)".
class OpenCLKernelHelper {
public:
    /// All platforms in the runtime's order; an empty list is not an error.
    static std::vector<cl_platform_id> allPlatformIds();

    /// All devices of every type of one platform in the runtime's order. For a platform without devices the runtime
    /// usually reports an error (-1).
    static std::vector<cl_device_id> allDeviceIdsForPlatform(cl_platform_id platform);

    /// A text such as CL_PLATFORM_NAME, up to its first zero byte.
    static std::string queryPlatformInfo(cl_platform_id platform, cl_platform_info name);

    /// A text such as CL_DEVICE_NAME, up to its first zero byte.
    static std::string queryDeviceInfo(cl_device_id device, cl_device_info name);

    /// A number such as CL_DEVICE_MAX_COMPUTE_UNITS; T is one of std::uint32_t, std::uint64_t, std::size_t.
    template <typename T>
    static T queryDeviceInfo(cl_device_id device, cl_device_info name);

    /// The environment variable by which a user chooses a device: a part of its name or of its platform's, in upper or
    /// lower case ("llvmpipe", "portable computing language"). Unset or empty: the most powerful device is taken.
    static constexpr const char* deviceVariable = "ORVEX_OPENCL_DEVICE";

    /// Every usable device, best first: those that the variable names, then devices whose type is GPU alone, then all
    /// others, each by descending score, equal scores in order of discovery. Platforms and devices for which a query
    /// fails are left out. Throws only if the platforms themselves cannot be listed.
    static std::vector<OpenCLDeviceInfo> devicesInOrderOfChoice();

    /// The first of devicesInOrderOfChoice(). Throws Exception "No devices were found!" when there is none, and
    /// "No device has \"…\" in its name! (ORVEX_OPENCL_DEVICE)" when the variable names none.
    static cl_device_id idOfMostPowerfulDevice();
};

} // namespace Renderer
