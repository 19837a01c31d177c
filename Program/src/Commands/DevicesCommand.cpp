#include "Commands.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <cstdlib>
#include <nlohmann/json.hpp>

#include "Exception/Exception.h"
#include "Options.h"
#include "Renderer/OpenCL/OpenCLKernelHelper.h"
#include "Report/Failure.h"
#include "Report/Json.h"
#include "System/KernelCache.h"
#include "System/OpenCLDrivers.h"
#include "System/RenderingDevice.h"

namespace Program {

using namespace Tools;

namespace {

using Renderer::OpenCLDeviceInfo;

constexpr const char* whatToInstall =
    "Install a driver, for example on Debian:\n"
    "  apt-get install pocl-opencl-icd      any CPU\n"
    "  apt-get install intel-opencl-icd     Intel GPUs\n"
    "  apt-get install mesa-opencl-icd      AMD GPUs\n"
    "  apt-get install nvidia-opencl-icd    NVIDIA GPUs";

std::string typeText(std::uint64_t type) {
    std::string text;
    const auto add = [&](std::uint64_t bit, const char* name) {
        if (type & bit) text += (text.empty() ? "" : "+") + std::string(name);
    };
    add(CL_DEVICE_TYPE_GPU, "GPU");
    add(CL_DEVICE_TYPE_CPU, "CPU");
    add(CL_DEVICE_TYPE_ACCELERATOR, "accelerator");
    add(CL_DEVICE_TYPE_CUSTOM, "custom");
    add(CL_DEVICE_TYPE_DEFAULT, "default");
    return text.empty() ? "unknown" : text;
}

/// Why the first of the devices is the one that renders.
std::string reasonOfChoice(const std::vector<OpenCLDeviceInfo>& devices) {
    const auto isGpu = [](const OpenCLDeviceInfo& device) { return device.type == CL_DEVICE_TYPE_GPU; };
    if (devices.size() == 1) return "it is the only one";
    if (devices[0].isNamed) return "it is the one asked for";
    if (isGpu(devices[0]) && !isGpu(devices[1])) return "GPUs come before other devices";
    return devices[0].score == devices[1].score ? "it was found first among the best"
                                                : "it has the highest score (compute units x work-group size x MHz)";
}

/// The devices in order of choice. `problem` says why the first of them, if there is one, is not to render.
std::vector<OpenCLDeviceInfo> findDevices(std::string& problem) {
    std::vector<OpenCLDeviceInfo> devices;
    try {
        devices = Renderer::OpenCLKernelHelper::devicesInOrderOfChoice();
    } catch (const Exception& exception) {
        problem = fmt::format("No OpenCL driver was found. {}", exception.what());
        return devices;
    }
    if (devices.empty()) {
        problem = "No OpenCL device was found.";
        return devices;
    }
    try {
        Renderer::OpenCLKernelHelper::idOfMostPowerfulDevice();
    } catch (const Exception& exception) {
        problem = exception.what();
    }
    return devices;
}

const char* variable(const char* name) { return std::getenv(name); }

/// Empty where the loader itself has failed, which the devices' problem tells.
std::vector<OpenCLDriver> findDrivers() {
    try {
        return OpenCLDriver::all();
    } catch (const Exception&) {
        return {};
    }
}

/// Where the driver of this device keeps compiled kernels.
std::string kernelCacheOf(const OpenCLDeviceInfo& device, const std::vector<OpenCLDriver>& drivers) {
    for (const OpenCLDriver& driver : drivers) {
        if (driver.name == device.platform) return driver.kernelCache(variable);
    }
    return {};
}

/// `devices`: the OpenCL devices, which one renders and why, and whether it does.
class DevicesCommand : public Command {
public:
    std::string name() const override { return "devices"; }
    std::string summary() const override { return "List the OpenCL devices and test the one that will render"; }
    std::string example() const override;
    void declareOptions(CLI::App& app) override;
    ExitCode run() override;

private:
    std::string m_device;
    bool m_asJson = false;
    bool m_isProbe = false; ///< this process is the test
};

} // namespace

std::string DevicesCommand::example() const {
    return "  lenscorrect devices\n"
           "Run it once on a machine before starting many jobs there: it also fills the kernel cache.";
}

void DevicesCommand::declareOptions(CLI::App& app) {
    declareDevice(app, m_device);
    app.add_flag("--json", m_asJson, "Print JSON (Docs/schemas/devices.json)");
    app.add_flag("--probe", m_isProbe, "Only render a test picture in this process")->group("");
}

ExitCode DevicesCommand::run() {
    if (m_isProbe) {
        RenderProbe::renderHere();
        return ExitCode::Done;
    }
    const RenderingDevice preparation(m_device);
    const KernelCache& cache = preparation.cache();
    std::string problem;
    const std::vector<OpenCLDeviceInfo> devices = findDevices(problem);
    const std::vector<OpenCLDriver> drivers = findDrivers();
    const bool isChosen = problem.empty();
    RenderProbe probe;
    if (isChosen) {
        probe = RenderProbe::run();
        if (!probe.isRendering) {
            // With a fresh cache the device renders: then it is the old one that is broken.
            const PrivateFolder fresh("lenscorrect-kernels");
            problem = RenderProbe::run(fresh.path()).isRendering
                          ? fmt::format("The kernel cache is broken. Clear it: rm -r \"{}\"", cache.folder())
                          : "The device does not render. Its driver may be broken or too old.";
            problem += fmt::format("\nReason: {}", probe.reason);
        }
    }

    if (m_asJson) {
        nlohmann::ordered_json list = nlohmann::ordered_json::array();
        for (const OpenCLDeviceInfo& device : devices) {
            list.push_back({{"name", device.name},
                            {"vendor", device.vendor},
                            {"type", typeText(device.type)},
                            {"computeUnits", device.maxComputeUnits},
                            {"clockFrequencyMHz", device.maxClockFrequency},
                            {"workGroupSize", device.maxWorkGroupSize},
                            {"score", device.score},
                            {"driver", device.platform},
                            {"isTaken", isChosen && &device == devices.data()}});
        }
        nlohmann::ordered_json driverList = nlohmann::ordered_json::array();
        for (const OpenCLDriver& driver : drivers) {
            driverList.push_back({{"name", driver.name},
                                  {"version", driver.version},
                                  {"deviceCount", driver.deviceCount},
                                  {"kernelCache", driver.kernelCache(variable)},
                                  {"problem", driver.problem(variable)}});
        }
        const nlohmann::ordered_json all{
            {"version", 1},
            {"devices", list},
            {"drivers", driverList},
            {"isRendering", probe.isRendering},
            {"problem", problem},
            {"kernelCache",
             {{"folder", cache.folder()}, {"isPrivate", cache.isPrivate()}, {"problem", cache.problem()}}}};
        fmt::print("{}\n", jsonText(all));
        return problem.empty() ? ExitCode::Done : ExitCode::Environment;
    }

    for (const OpenCLDeviceInfo& device : devices) {
        fmt::print("{} {} ({}, {}): {} compute units, {} MHz, work-groups of {}, score {}\n",
                   isChosen && &device == devices.data() ? "*" : " ", device.name, typeText(device.type), device.vendor,
                   device.maxComputeUnits, device.maxClockFrequency, device.maxWorkGroupSize, device.score);
    }
    std::string emptyDrivers;
    for (const OpenCLDriver& driver : drivers) {
        if (driver.deviceCount == 0)
            emptyDrivers += fmt::format("The driver {} has no device. {}\n", driver.name, driver.problem(variable));
    }
    if (isChosen) {
        fmt::print("The device marked * renders: {}.\n", reasonOfChoice(devices));
        const std::string folder = kernelCacheOf(devices.front(), drivers);
        // The notice is about PoCL's; other drivers do without a cache that they cannot write.
        const bool isPocls = folder == cache.folder();
        if (isPocls && !cache.notice().empty()) {
            fmt::print("{}\n", cache.notice());
        } else if (!folder.empty()) {
            fmt::print("Kernel cache: {}\n", folder);
        }
    }
    if (!devices.empty()) fmt::print("{}", emptyDrivers);
    if (problem.empty()) {
        fmt::print("A test picture was rendered.\n");
        return ExitCode::Done;
    }
    std::fflush(stdout);
    if (devices.empty() && !cache.notice().empty()) problem += "\n" + cache.notice();
    throw Failure(Failure::Kind::Environment,
                  devices.empty() ? fmt::format("{}\n{}{}", problem, emptyDrivers, whatToInstall) : problem);
}

std::unique_ptr<Command> makeDevicesCommand() { return std::make_unique<DevicesCommand>(); }

} // namespace Program
