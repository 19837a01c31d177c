// Times one frame: the kernels alone, one frame through the core, and where built in the peers, interleaved.
// Prints one JSON object. Needs nothing beside it but an OpenCL driver when built without peers.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <nlohmann/json.hpp>
#include <string>
#include <thread>
#include <vector>

#include "ComparedFrame.h"
#include "Exception/Exception.h"
#include "InterleavedRun.h"
#include "Renderer/DeviceKernel.h"
#include "Renderer/DistortionRenderer.h"
#include "Renderer/NativeKernels.h"
#include "Renderer/OpenCL/OpenCLKernelHelper.h"
#include "Renderer/ShadingRenderer.h"
#ifdef ORVEX_BENCHMARK_PEERS
#include "LensfunPeer.h"
#include "OpenCVPeer.h"
#endif

namespace {

// Whether the allocator is the program's, or the C library's as inside a host.
#ifdef ORVEX_BENCHMARK_UNPREPARED
constexpr bool isPrepared = false;
#else
constexpr bool isPrepared = true;
#endif

struct Options {
    int width = 4096;
    int height = 2160;
    unsigned int threads = 0;
    unsigned int warmUp = 6;
    unsigned int repeats = 9;
    bool withPeers = true;
};

std::vector<float> noise(std::size_t count) {
    std::vector<float> values(count);
    std::uint32_t random = 1;
    for (float& value : values) {
        random = random * 1664525u + 1013904223u;
        value = static_cast<float>(random >> 8) / 16777216.0f;
    }
    return values;
}

ComparedFrame frameFor(const Options& options) {
    ComparedFrame frame;
    frame.width = options.width;
    frame.height = options.height;
    frame.threads = options.threads;
    auto& distortion = frame.distortion;
    distortion.currentWidth = distortion.originalWidth = static_cast<std::uint32_t>(options.width);
    distortion.currentHeight = distortion.originalHeight = static_cast<std::uint32_t>(options.height);
    distortion.imageRadius = distortion.frameImageRadius = 15.0f;
    distortion.a1 = 0.97f;
    distortion.a2 = 0.002f;
    distortion.a3 = 1e-4f;
    auto& shading = frame.shading;
    shading.currentWidth = shading.originalWidth = distortion.currentWidth;
    shading.currentHeight = shading.originalHeight = distortion.currentHeight;
    shading.imageRadius = 15.0f;
    shading.a0 = 100.0f;
    shading.a2 = -0.1f;
    return frame;
}

double largestDifference(const std::vector<float>& one, const std::vector<float>& other, bool relative) {
    double largest = 0.0;
    for (std::size_t i = 0; i < one.size(); i++) {
        const double difference = std::abs(static_cast<double>(one[i]) - static_cast<double>(other[i]));
        const double scale = relative ? std::max(1e-30, std::abs(static_cast<double>(other[i]))) : 1.0;
        largest = std::max(largest, difference / scale);
    }
    return largest;
}

std::string deviceName() {
    const cl_device_id device = Renderer::OpenCLKernelHelper::idOfMostPowerfulDevice();
    return Renderer::OpenCLKernelHelper::queryDeviceInfo(device, CL_DEVICE_NAME);
}

nlohmann::ordered_json compare(const Options& options) {
    const std::size_t count = static_cast<std::size_t>(options.width) * static_cast<std::size_t>(options.height) * 4;
    const std::vector<float> input = noise(count);
    std::vector<float> output(count);
    ComparedFrame frame = frameFor(options);
    frame.input = input.data();
    frame.output = output.data();

    Renderer::DistortionRenderer distortion;
    Renderer::ShadingRenderer shading;
    distortion.parameter = frame.distortion;
    shading.parameter = frame.shading;
    nlohmann::json differences;
    {
        std::vector<float> native(count);
        NativeKernels::distortion(frame.distortion, frame.input, native.data(), frame.threads);
        distortion.render(frame.input, frame.output, frame.bytes());
        differences["distortion"] = largestDifference(output, native, false);
        NativeKernels::shading(frame.shading, frame.input, native.data(), frame.threads);
        shading.render(frame.input, frame.output, frame.bytes());
        differences["shading"] = largestDifference(output, native, true);
    }

    InterleavedRun run;
    DeviceKernel distortionKernel(frame.distortion, frame.input);
    DeviceKernel shadingKernel(frame.shading, frame.input);
    run.add("memcpy", [&] { std::memcpy(frame.output, frame.input, frame.bytes()); });
    run.add("native distortion",
            [&] { NativeKernels::distortion(frame.distortion, frame.input, frame.output, frame.threads); });
    run.add("native shading", [&] { NativeKernels::shading(frame.shading, frame.input, frame.output, frame.threads); });
    using Launch = DeviceKernel::Launch;
    run.add("distortion kernel", [&] { distortionKernel.run(Launch::perByte); });
    run.add("distortion kernel, an item per pixel", [&] { distortionKernel.run(Launch::perPixel); });
    run.add("shading kernel", [&] { shadingKernel.run(Launch::perByte); });
    run.add("shading kernel, an item per pixel", [&] { shadingKernel.run(Launch::perPixel); });
    run.add("write to the device", [&] { distortionKernel.write(frame.input); });
    run.add("read from the device", [&] { distortionKernel.read(frame.output); });
    run.add("distortion through the core", [&] { distortion.render(frame.input, frame.output, frame.bytes()); });
    run.add("shading through the core", [&] { shading.render(frame.input, frame.output, frame.bytes()); });
#ifdef ORVEX_BENCHMARK_PEERS
    if (options.withPeers) {
        OpenCVPeer::addTo(run, frame);
        LensfunPeer::addTo(run, frame);
    }
#endif
    nlohmann::ordered_json milliseconds; // in the order of the report
    for (const InterleavedRun::Result& result : run.run(options.warmUp, options.repeats))
        milliseconds[result.name] = result.milliseconds;
    return {{"width", options.width},      {"height", options.height}, {"threads", options.threads},
            {"device", deviceName()},      {"prepared", isPrepared},   {"differences", differences},
            {"milliseconds", milliseconds}};
}

} // namespace

int main(int argumentCount, char** arguments) {
    Options options;
    CLI::App app("Times the correction of one frame beside other ways to do it; prints JSON.");
    app.add_option("--width", options.width, "px")->check(CLI::Range(1, 16384))->capture_default_str();
    app.add_option("--height", options.height, "px")->check(CLI::Range(1, 16384))->capture_default_str();
    app.add_option("--threads", options.threads, "of every contestant; 0: one per core")->check(CLI::Range(0, 256));
    app.add_option("--warm-up", options.warmUp, "rounds that do not count")->capture_default_str();
    app.add_option("--repeats", options.repeats, "rounds that count")->check(CLI::Range(1, 10000));
    app.add_flag("!--no-peers", options.withPeers, "only this project, native loops and copies");
    CLI11_PARSE(app, argumentCount, arguments);
    if (options.threads == 0) options.threads = std::max(1u, std::thread::hardware_concurrency());
    // Read by the processor's driver at the first OpenCL call.
    setenv("POCL_MAX_PTHREAD_COUNT", std::to_string(options.threads).c_str(), 1);
    try {
        std::cout << compare(options).dump(1) << '\n';
    } catch (const Exception& exception) {
        std::cerr << exception.what() << '\n';
        return 3;
    }
}
