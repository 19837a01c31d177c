#include "Commands.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <nlohmann/json.hpp>

#include "Exception/Exception.h"
#include "Renderer/OpenCL/OpenCLKernelHelper.h"
#include "Report/Failure.h"
#include "Report/Json.h"
#include "System/KernelCache.h"
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
    if (isGpu(devices[0]) && !isGpu(devices[1])) return "GPUs come before other devices";
    return devices[0].score == devices[1].score ? "it was found first among the best"
                                                : "it has the highest score (compute units x work-group size x MHz)";
}

std::vector<OpenCLDeviceInfo> findDevices(std::string& problem) {
    try {
        std::vector<OpenCLDeviceInfo> devices = Renderer::OpenCLKernelHelper::devicesInOrderOfChoice();
        if (devices.empty()) problem = "No OpenCL device was found.";
        return devices;
    } catch (const Exception& exception) {
        problem = fmt::format("No OpenCL driver was found. {}", exception.what());
        return {};
    }
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
    bool m_asJson = false;
    bool m_isProbe = false; ///< this process is the test
};

} // namespace

std::string DevicesCommand::example() const {
    return "  lenscorrect devices\n"
           "Run it once on a machine before starting many jobs there: it also fills the kernel cache.";
}

void DevicesCommand::declareOptions(CLI::App& app) {
    app.add_flag("--json", m_asJson, "Print JSON (Docs/schemas/devices.json)");
    app.add_flag("--probe", m_isProbe, "Only render a test picture in this process")->group("");
}

ExitCode DevicesCommand::run() {
    if (m_isProbe) {
        RenderProbe::renderHere();
        return ExitCode::Done;
    }
    const KernelCache cache;
    std::string problem;
    const std::vector<OpenCLDeviceInfo> devices = findDevices(problem);
    RenderProbe probe;
    if (!devices.empty()) {
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
                            {"isTaken", &device == devices.data()}});
        }
        const nlohmann::ordered_json all{
            {"version", 1},
            {"devices", list},
            {"isRendering", probe.isRendering},
            {"problem", problem},
            {"kernelCache",
             {{"folder", cache.folder()}, {"isPrivate", cache.isPrivate()}, {"problem", cache.problem()}}}};
        fmt::print("{}\n", jsonText(all));
        return problem.empty() ? ExitCode::Done : ExitCode::Environment;
    }

    for (const OpenCLDeviceInfo& device : devices) {
        fmt::print("{} {} ({}, {}): {} compute units, {} MHz, work-groups of {}, score {}\n",
                   &device == devices.data() ? "*" : " ", device.name, typeText(device.type), device.vendor,
                   device.maxComputeUnits, device.maxClockFrequency, device.maxWorkGroupSize, device.score);
    }
    if (!devices.empty()) {
        fmt::print("The device marked * renders: {}.\n", reasonOfChoice(devices));
        if (cache.notice().empty()) {
            fmt::print("Kernel cache: {}\n", cache.folder());
        } else {
            fmt::print("{}\n", cache.notice());
        }
    }
    if (problem.empty()) {
        fmt::print("A test picture was rendered.\n");
        return ExitCode::Done;
    }
    std::fflush(stdout);
    if (devices.empty() && !cache.notice().empty()) problem += "\n" + cache.notice();
    throw Failure(Failure::Kind::Environment,
                  devices.empty() ? fmt::format("{}\n{}", problem, whatToInstall) : problem);
}

std::unique_ptr<Command> makeDevicesCommand() { return std::make_unique<DevicesCommand>(); }

} // namespace Program
