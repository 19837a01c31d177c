#include "Commands.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

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

const char* variable(const char* name) { return std::getenv(name); }

/// What the machine has to render with, and whether it does.
class DeviceReport {
public:
    /// Asks the drivers, and renders a test picture with the device that they give.
    explicit DeviceReport(const KernelCache& cache);

    /// What keeps the machine from rendering, and what to do; empty if nothing does.
    std::string problem() const;
    std::string text() const;
    nlohmann::ordered_json json() const;

private:
    void findDevices();
    void testFirstDevice();
    bool isTaken(const OpenCLDeviceInfo& device) const { return m_isChosen && &device == m_devices.data(); }
    std::string emptyDrivers() const;
    std::string kernelCacheText() const;

    const KernelCache& m_cache;
    std::vector<OpenCLDeviceInfo> m_devices; ///< in order of choice
    std::vector<OpenCLDriver> m_drivers;
    bool m_isChosen = false; ///< whether the first of the devices is to render
    RenderProbe m_probe;
    std::string m_problem;
};

DeviceReport::DeviceReport(const KernelCache& cache) : m_cache(cache) {
    findDevices();
    m_isChosen = m_problem.empty();
    if (m_isChosen) testFirstDevice();
}

void DeviceReport::findDevices() {
    try {
        m_devices = Renderer::OpenCLKernelHelper::devicesInOrderOfChoice();
        m_drivers = OpenCLDriver::all();
    } catch (const Exception& exception) {
        m_problem = fmt::format("No OpenCL driver was found. {}", exception.what());
        return;
    }
    if (m_devices.empty()) {
        m_problem = "No OpenCL device was found.";
        return;
    }
    try {
        Renderer::OpenCLKernelHelper::idOfMostPowerfulDevice();
    } catch (const Exception& exception) {
        m_problem = exception.what();
    }
}

void DeviceReport::testFirstDevice() {
    m_probe = RenderProbe::run();
    if (m_probe.isRendering) return;
    // With a fresh cache the device renders: then it is the old one that is broken.
    const PrivateFolder fresh("lenscorrect-kernels");
    m_problem = RenderProbe::run(fresh.path()).isRendering
                    ? fmt::format("The kernel cache is broken. Clear it: rm -r \"{}\"", m_cache.folder())
                    : "The device does not render. Its driver may be broken or too old.";
    m_problem += fmt::format("\nReason: {}", m_probe.reason);
}

std::string DeviceReport::problem() const {
    if (!m_devices.empty()) return m_problem;
    const std::string notice = m_cache.notice().empty() ? "" : m_cache.notice() + "\n";
    return fmt::format("{}\n{}{}{}", m_problem, notice, emptyDrivers(), whatToInstall);
}

std::string DeviceReport::emptyDrivers() const {
    std::string text;
    for (const OpenCLDriver& driver : m_drivers) {
        if (driver.deviceCount == 0)
            text += fmt::format("The driver {} has no device. {}\n", driver.name, driver.problem(variable));
    }
    return text;
}

std::string DeviceReport::kernelCacheText() const {
    for (const OpenCLDriver& driver : m_drivers) {
        if (driver.name != m_devices.front().platform) continue;
        const std::string folder = driver.kernelCache(variable);
        // The notice is about PoCL's; other drivers do without a cache that they cannot write.
        if (folder == m_cache.folder() && !m_cache.notice().empty()) return m_cache.notice() + "\n";
        if (!folder.empty()) return fmt::format("Kernel cache: {}\n", folder);
    }
    return {};
}

std::string DeviceReport::text() const {
    std::string text;
    for (const OpenCLDeviceInfo& device : m_devices) {
        text += fmt::format("{} {} ({}, {}): {} compute units, {} MHz, work-groups of {}, score {}\n",
                            isTaken(device) ? "*" : " ", device.name, typeText(device.type), device.vendor,
                            device.maxComputeUnits, device.maxClockFrequency, device.maxWorkGroupSize, device.score);
    }
    if (m_isChosen)
        text += fmt::format("The device marked * renders: {}.\n", reasonOfChoice(m_devices)) + kernelCacheText();
    if (!m_devices.empty()) text += emptyDrivers();
    if (m_probe.isRendering) text += "A test picture was rendered.\n";
    return text;
}

nlohmann::ordered_json DeviceReport::json() const {
    nlohmann::ordered_json devices = nlohmann::ordered_json::array();
    for (const OpenCLDeviceInfo& device : m_devices) {
        devices.push_back({{"name", device.name},
                           {"vendor", device.vendor},
                           {"type", typeText(device.type)},
                           {"computeUnits", device.maxComputeUnits},
                           {"clockFrequencyMHz", device.maxClockFrequency},
                           {"workGroupSize", device.maxWorkGroupSize},
                           {"score", device.score},
                           {"driver", device.platform},
                           {"isTaken", isTaken(device)}});
    }
    nlohmann::ordered_json drivers = nlohmann::ordered_json::array();
    for (const OpenCLDriver& driver : m_drivers) {
        drivers.push_back({{"name", driver.name},
                           {"version", driver.version},
                           {"deviceCount", driver.deviceCount},
                           {"kernelCache", driver.kernelCache(variable)},
                           {"problem", driver.problem(variable)}});
    }
    return {{"version", 1},
            {"devices", devices},
            {"drivers", drivers},
            {"isRendering", m_probe.isRendering},
            {"problem", m_problem},
            {"kernelCache",
             {{"folder", m_cache.folder()}, {"isPrivate", m_cache.isPrivate()}, {"problem", m_cache.problem()}}}};
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
    const DeviceReport report(preparation.cache());
    const bool isRendering = report.problem().empty();
    if (m_asJson) {
        fmt::print("{}\n", jsonText(report.json()));
        return isRendering ? ExitCode::Done : ExitCode::Environment;
    }
    fmt::print("{}", report.text());
    if (isRendering) return ExitCode::Done;
    std::fflush(stdout);
    throw Failure(Failure::Kind::Environment, report.problem());
}

std::unique_ptr<Command> makeDevicesCommand() { return std::make_unique<DevicesCommand>(); }

} // namespace Program
