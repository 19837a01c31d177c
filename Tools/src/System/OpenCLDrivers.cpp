#include "System/OpenCLDrivers.h"

#include <pwd.h>
#include <unistd.h>

#include "Exception/Exception.h"
#include "Renderer/OpenCL/OpenCLKernelHelper.h"
#include "System/KernelCache.h"

namespace Tools {
namespace {

using Renderer::OpenCLKernelHelper;

constexpr const char* pocl = "Portable Computing Language";
constexpr const char* mesa = "rusticl";
constexpr const char* olderMesa = "Clover";
constexpr const char* nvidia = "NVIDIA CUDA";

/// As Mesa looks for it: a home that a variable names is not asked.
std::string mesaCache(const OpenCLDriver::Variable& variable) {
    for (const char* const name : {"MESA_SHADER_CACHE_DIR", "XDG_CACHE_HOME"}) {
        const char* const folder = variable(name);
        if (folder && *folder) return std::string(folder) + "/mesa_shader_cache";
    }
    const passwd* const user = ::getpwuid(::getuid());
    return user ? std::string(user->pw_dir) + "/.cache/mesa_shader_cache" : std::string();
}

std::string nvidiaCache(const OpenCLDriver::Variable& variable) {
    if (const char* const folder = variable("CUDA_CACHE_PATH")) return folder;
    const char* const home = variable("HOME");
    return home ? std::string(home) + "/.nv/ComputeCache" : std::string();
}

} // namespace

std::vector<OpenCLDriver> OpenCLDriver::all() {
    std::vector<OpenCLDriver> drivers;
    for (const cl_platform_id platform : OpenCLKernelHelper::allPlatformIds()) {
        OpenCLDriver driver;
        try {
            driver.name = OpenCLKernelHelper::queryPlatformInfo(platform, CL_PLATFORM_NAME);
            driver.version = OpenCLKernelHelper::queryPlatformInfo(platform, CL_PLATFORM_VERSION);
            driver.deviceCount = OpenCLKernelHelper::allDeviceIdsForPlatform(platform).size();
        } catch (const Exception&) {
            // Most drivers without a device answer the last question with an error.
        }
        if (!driver.name.empty()) drivers.push_back(driver);
    }
    return drivers;
}

std::string OpenCLDriver::kernelCache(const Variable& variable) const {
    if (name == pocl) return KernelCache::usualFolder(variable);
    if (name == mesa || name == olderMesa) return mesaCache(variable);
    if (name == nvidia) return nvidiaCache(variable);
    return {};
}

std::string OpenCLDriver::problem(const Variable& variable) const {
    if (deviceCount > 0) return {};
    if (name == pocl) return "Make its kernel cache writable: " + kernelCache(variable);
    if (name == olderMesa) return "It serves only AMD GPUs; rusticl, of the same package, is its successor.";
    if (name == mesa) {
        const char* const enabled = variable("RUSTICL_ENABLE");
        if (!enabled || !*enabled)
            return "Set RUSTICL_ENABLE to the drivers that may be used: radeonsi (AMD GPUs), iris (Intel GPUs), "
                   "llvmpipe (any CPU).";
        return std::string("RUSTICL_ENABLE is \"") + enabled +
               "\". Install its library of OpenCL functions (apt-get install libclc-15), and check that one of these "
               "drivers has a device here.";
    }
    return "No device of its kind is here, or this user may not open it.";
}

} // namespace Tools
