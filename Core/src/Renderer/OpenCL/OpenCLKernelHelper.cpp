#include "Renderer/OpenCL/OpenCLKernelHelper.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <type_traits>
#include <utility>

#include "Exception/Exception.h"
#include "Renderer/OpenCL/OpenCLStatus.h"
#include "Text/lowerCase.h"

namespace Renderer {
namespace {

OpenCLDeviceInfo infoOfDevice(cl_device_id device) {
    OpenCLDeviceInfo info;
    info.id = device;
    info.name = OpenCLKernelHelper::queryDeviceInfo(device, CL_DEVICE_NAME);
    info.type = OpenCLKernelHelper::queryDeviceInfo<std::uint64_t>(device, CL_DEVICE_TYPE);
    info.vendor = OpenCLKernelHelper::queryDeviceInfo(device, CL_DEVICE_VENDOR);
    info.maxComputeUnits = OpenCLKernelHelper::queryDeviceInfo<std::uint32_t>(device, CL_DEVICE_MAX_COMPUTE_UNITS);
    info.maxClockFrequency = OpenCLKernelHelper::queryDeviceInfo<std::uint32_t>(device, CL_DEVICE_MAX_CLOCK_FREQUENCY);
    info.maxWorkGroupSize = OpenCLKernelHelper::queryDeviceInfo<std::size_t>(device, CL_DEVICE_MAX_WORK_GROUP_SIZE);
    info.score = std::uint64_t{info.maxComputeUnits} * info.maxWorkGroupSize * info.maxClockFrequency;
    return info;
}

// Compared whole, not tested as a bit: a device that is a GPU and something else does not count as a GPU.
bool isGpu(const OpenCLDeviceInfo& info) { return info.type == CL_DEVICE_TYPE_GPU; }

bool isPreferred(const OpenCLDeviceInfo& left, const OpenCLDeviceInfo& right) {
    if (left.isNamed != right.isNamed) return left.isNamed;
    if (isGpu(left) != isGpu(right)) return isGpu(left);
    return left.score > right.score;
}

/// What the user asks for; empty: nothing.
std::string nameWanted() {
    const char* const name = std::getenv(OpenCLKernelHelper::deviceVariable);
    return name ? name : "";
}

bool isPartOf(const std::string& part, const std::string& text) {
    return Text::lowerCase(text).find(Text::lowerCase(part)) != std::string::npos;
}

/// A text that decides nothing: without it the platform's devices are as good.
std::string nameOfPlatform(cl_platform_id platform) {
    try {
        return OpenCLKernelHelper::queryPlatformInfo(platform, CL_PLATFORM_NAME);
    } catch (const Exception&) {
        return {};
    }
}

} // namespace

std::vector<cl_platform_id> OpenCLKernelHelper::allPlatformIds() {
    cl_uint count = 0;
    throwIfFailed(clGetPlatformIDs(0, nullptr, &count), "Failed to query number of all available platforms!");
    std::vector<cl_platform_id> ids(count);
    if (ids.empty()) return ids;
    throwIfFailed(clGetPlatformIDs(count, ids.data(), nullptr), "Failed to query all available platform identifiers!");
    return ids;
}

std::vector<cl_device_id> OpenCLKernelHelper::allDeviceIdsForPlatform(cl_platform_id platform) {
    cl_uint count = 0;
    throwIfFailed(clGetDeviceIDs(platform, CL_DEVICE_TYPE_ALL, 0, nullptr, &count),
                  "Failed to query number of all available devices per platform!");
    std::vector<cl_device_id> ids(count);
    if (ids.empty()) return ids;
    throwIfFailed(clGetDeviceIDs(platform, CL_DEVICE_TYPE_ALL, count, ids.data(), nullptr),
                  "Failed to query all available device identifiers per platform!");
    return ids;
}

std::string OpenCLKernelHelper::queryPlatformInfo(cl_platform_id platform, cl_platform_info name) {
    std::size_t size = 0;
    throwIfFailed(clGetPlatformInfo(platform, name, 0, nullptr, &size),
                  "Failed to query length of platform info with id " + std::to_string(name) + "!");
    if (size == 0) return std::string();
    std::string text(size, '\0');
    throwIfFailed(clGetPlatformInfo(platform, name, size, text.data(), nullptr),
                  "Failed to query platform info with id " + std::to_string(name) + "!");
    return text.c_str();
}

std::string OpenCLKernelHelper::queryDeviceInfo(cl_device_id device, cl_device_info name) {
    std::size_t size = 0;
    throwIfFailed(clGetDeviceInfo(device, name, 0, nullptr, &size),
                  "Failed to query length of device info with id " + std::to_string(name) + "!");
    if (size == 0) return std::string();
    std::string text(size, '\0');
    throwIfFailed(clGetDeviceInfo(device, name, size, text.data(), nullptr),
                  "Failed to query device info with id " + std::to_string(name) + "!");
    return text.c_str();
}

template <typename T>
T OpenCLKernelHelper::queryDeviceInfo(cl_device_id device, cl_device_info name) {
    T value = 0;
    throwIfFailed(clGetDeviceInfo(device, name, sizeof(T), &value, nullptr),
                  "Failed to query device info with id " + std::to_string(name) + "!");
    return value;
}

template std::uint32_t OpenCLKernelHelper::queryDeviceInfo<std::uint32_t>(cl_device_id, cl_device_info);
template std::uint64_t OpenCLKernelHelper::queryDeviceInfo<std::uint64_t>(cl_device_id, cl_device_info);
// std::size_t is one of the two above.
static_assert(std::is_same_v<std::size_t, std::uint32_t> || std::is_same_v<std::size_t, std::uint64_t>);

std::vector<OpenCLDeviceInfo> OpenCLKernelHelper::devicesInOrderOfChoice() {
    const std::string wanted = nameWanted();
    std::vector<OpenCLDeviceInfo> infos;
    for (const cl_platform_id platform : allPlatformIds()) {
        std::vector<cl_device_id> devices;
        try {
            devices = allDeviceIdsForPlatform(platform);
        } catch (const Exception&) {
            continue; // one broken platform must not hide the devices of the others
        }
        const std::string platformName = nameOfPlatform(platform);
        for (const cl_device_id device : devices) {
            try {
                OpenCLDeviceInfo info = infoOfDevice(device);
                info.platform = platformName;
                info.isNamed = !wanted.empty() && (isPartOf(wanted, info.name) || isPartOf(wanted, platformName));
                infos.push_back(std::move(info));
            } catch (const Exception&) {
                continue; // likewise one broken device
            }
        }
    }
    std::stable_sort(infos.begin(), infos.end(), isPreferred);
    return infos;
}

cl_device_id OpenCLKernelHelper::idOfMostPowerfulDevice() {
    const std::vector<OpenCLDeviceInfo> infos = devicesInOrderOfChoice();
    if (infos.empty()) throw Exception("No devices were found!");
    const std::string wanted = nameWanted();
    if (!wanted.empty() && !infos.front().isNamed)
        throw Exception("No device has \"" + wanted + "\" in its name! (" + deviceVariable + ")");
    return infos.front().id;
}

} // namespace Renderer
