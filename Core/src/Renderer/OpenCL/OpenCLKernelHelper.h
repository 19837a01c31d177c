#pragma once

#include <CL/cl.h>

#include <string>
#include <vector>

#include "Renderer/OpenCL/OpenCLDeviceInfo.h"

namespace Renderer {

/// Queries the OpenCL runtime, and picks the device that renders.
///
/// Stateless: every call queries afresh. Every failure is an Exception of one sentence with the OpenCL status, for
/// example "Failed to query number of all available platforms! (-1001)".
class OpenCLKernelHelper {
public:
    /// All platforms in the runtime's order; none is no error.
    static std::vector<cl_platform_id> allPlatformIds();

    /// All devices of every type of one platform in the runtime's order. A platform without devices usually is an
    /// error (-1) of the runtime.
    static std::vector<cl_device_id> allDeviceIdsForPlatform(cl_platform_id platform);

    /// A text such as CL_PLATFORM_NAME, up to its first zero byte.
    static std::string queryPlatformInfo(cl_platform_id platform, cl_platform_info name);

    /// A text such as CL_DEVICE_NAME, up to its first zero byte.
    static std::string queryDeviceInfo(cl_device_id device, cl_device_info name);

    /// A number such as CL_DEVICE_MAX_COMPUTE_UNITS; T is one of std::uint32_t, std::uint64_t, std::size_t.
    template <typename T>
    static T queryDeviceInfo(cl_device_id device, cl_device_info name);

    /// Every usable device, best first: devices of type GPU and nothing else before all others, then by descending
    /// score, equals in the order of discovery. Platforms and devices that answer a query with an error are left out.
    /// Throws only when the platforms themselves cannot be listed.
    static std::vector<OpenCLDeviceInfo> devicesInOrderOfChoice();

    /// The first of devicesInOrderOfChoice(). Throws Exception "No devices were found!" when there is none.
    static cl_device_id idOfMostPowerfulDevice();
};

} // namespace Renderer
