#include "System/OpenCLDrivers.h"

#include <gtest/gtest.h>

#include <map>

#include "Support/OpenCLDevice.h"

using Tools::OpenCLDriver;

namespace {

OpenCLDriver::Variable environment(std::map<std::string, std::string> variables) {
    return [variables = std::move(variables)](const char* name) -> const char* {
        const auto variable = variables.find(name);
        return variable == variables.end() ? nullptr : variable->second.c_str();
    };
}

std::string kernelCache(const std::string& driver, std::map<std::string, std::string> variables) {
    return OpenCLDriver{driver, "", 1}.kernelCache(environment(std::move(variables)));
}

std::string problem(const std::string& driver, std::map<std::string, std::string> variables = {}) {
    return OpenCLDriver{driver, "", 0}.problem(environment(std::move(variables)));
}

} // namespace

TEST(OpenCLDriver, KeepsItsKernelsWhereItsOwnVariablesSay) {
    EXPECT_EQ(kernelCache("Portable Computing Language", {{"POCL_CACHE_DIR", "/p"}, {"HOME", "/h"}}), "/p");
    EXPECT_EQ(kernelCache("rusticl", {{"MESA_SHADER_CACHE_DIR", "/m"}, {"XDG_CACHE_HOME", "/x"}}),
              "/m/mesa_shader_cache");
    EXPECT_EQ(kernelCache("Clover", {{"XDG_CACHE_HOME", "/x"}, {"HOME", "/h"}}), "/x/mesa_shader_cache");
    EXPECT_EQ(kernelCache("NVIDIA CUDA", {{"CUDA_CACHE_PATH", "/c"}, {"HOME", "/h"}}), "/c");
    EXPECT_EQ(kernelCache("NVIDIA CUDA", {{"HOME", "/h"}}), "/h/.nv/ComputeCache");
}

TEST(OpenCLDriver, OfAnotherMakeKeepsThemWhereNobodyKnows) { EXPECT_EQ(kernelCache("Other", {{"HOME", "/h"}}), ""); }

TEST(OpenCLDriver, WithADeviceHasNoProblem) {
    EXPECT_EQ((OpenCLDriver{"rusticl", "", 1}.problem(environment({}))), "");
}

TEST(OpenCLDriver, WithoutADeviceSaysWhatToDo) {
    EXPECT_EQ(problem("rusticl"),
              "Set RUSTICL_ENABLE to the drivers that may be used: radeonsi (AMD GPUs), iris (Intel GPUs), llvmpipe "
              "(any CPU).");
    EXPECT_EQ(problem("rusticl", {{"RUSTICL_ENABLE", "iris"}}),
              "RUSTICL_ENABLE is \"iris\". Install its library of OpenCL functions (apt-get install libclc-15), and "
              "check that one of these drivers has a device here.");
    EXPECT_EQ(problem("Clover"), "It serves only AMD GPUs; rusticl, of the same package, is its successor.");
    EXPECT_EQ(problem("Portable Computing Language", {{"POCL_CACHE_DIR", "/p"}}), "Make its kernel cache writable: /p");
    EXPECT_EQ(problem("Other"), "No device of its kind is here, or this user may not open it.");
}

TEST(OpenCLDriver, OfTheDeviceThatRendersIsAmongThoseOfTheMachine) {
    if (!openCLDeviceExists()) GTEST_SKIP() << "no OpenCL device here";
    const std::string wanted = Renderer::OpenCLKernelHelper::devicesInOrderOfChoice().front().platform;
    std::size_t deviceCount = 0;
    for (const OpenCLDriver& driver : OpenCLDriver::all()) {
        if (driver.name == wanted) deviceCount = driver.deviceCount;
    }
    EXPECT_GE(deviceCount, 1u) << wanted;
}
