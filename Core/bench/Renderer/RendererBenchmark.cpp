#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstring>
#include <vector>

#include "Exception/Exception.h"
#include "Renderer/DeviceKernel.h"
#include "Renderer/DistortionRenderer.h"
#include "Renderer/NativeKernels.h"
#include "Renderer/ShadingRenderer.h"

namespace {

using namespace Renderer;

using Launch = DeviceKernel::Launch;

std::vector<float> noise(const benchmark::State& state) {
    std::vector<float> values(static_cast<std::size_t>(state.range(0) * state.range(1)) * 4);
    std::uint32_t random = 1;
    for (float& value : values) {
        random = random * 1664525u + 1013904223u;
        value = static_cast<float>(random >> 8) / 16777216.0f;
    }
    return values;
}

template <typename Parameter>
Parameter parameterFor(const benchmark::State& state) {
    Parameter parameter;
    parameter.currentWidth = parameter.originalWidth = static_cast<std::uint32_t>(state.range(0));
    parameter.currentHeight = parameter.originalHeight = static_cast<std::uint32_t>(state.range(1));
    parameter.imageRadius = 15.0f;
    return parameter;
}

DistortionParameter distortionFor(const benchmark::State& state) {
    auto parameter = parameterFor<DistortionParameter>(state);
    parameter.frameImageRadius = 15.0f;
    parameter.a1 = 0.97f;
    parameter.a2 = 0.002f;
    parameter.a3 = 1e-4f;
    return parameter;
}

ShadingParameter shadingFor(const benchmark::State& state) {
    auto parameter = parameterFor<ShadingParameter>(state);
    parameter.a0 = 100.0f;
    parameter.a2 = -0.1f;
    return parameter;
}

template <typename Parameter>
void runKernel(benchmark::State& state, const Parameter& parameter, Launch launch) {
    try {
        const std::vector<float> frame = noise(state);
        DeviceKernel kernel(parameter, frame.data());
        // The first run generates machine code and touches the output's pages.
        kernel.run(launch);
        for (auto _ : state) kernel.run(launch);
        state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(frame.size() * sizeof(float)));
    } catch (const Exception& exception) {
        state.SkipWithError(exception.what());
    }
}

void distortionKernel(benchmark::State& state, Launch launch) { runKernel(state, distortionFor(state), launch); }

void shadingKernel(benchmark::State& state, Launch launch) { runKernel(state, shadingFor(state), launch); }

/// Anything that makes an output frame from an input frame in host memory.
template <typename Operation>
void runOnHost(benchmark::State& state, const Operation& operation) {
    const std::vector<float> input = noise(state);
    std::vector<float> output(input.size());
    for (auto _ : state) {
        operation(input.data(), output.data(), input.size() * sizeof(float));
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(input.size() * sizeof(float)));
}

/// One whole execution as the core does it: write, launch, read.
template <typename AnyRenderer, typename Parameter>
void runRenderer(benchmark::State& state, const Parameter& parameter) {
    try {
        AnyRenderer renderer;
        renderer.parameter = parameter;
        runOnHost(state,
                  [&](const float* input, float* output, std::size_t size) { renderer.render(input, output, size); });
    } catch (const Exception& exception) {
        state.SkipWithError(exception.what());
    }
}

void copy(benchmark::State& state) {
    runOnHost(state, [](const float* input, float* output, std::size_t size) { std::memcpy(output, input, size); });
}

void nativeDistortion(benchmark::State& state) {
    const DistortionParameter parameter = distortionFor(state);
    runOnHost(state, [&](const float* input, float* output, std::size_t) {
        NativeKernels::distortion(parameter, input, output);
    });
}

void nativeShading(benchmark::State& state) {
    const ShadingParameter parameter = shadingFor(state);
    runOnHost(state, [&](const float* input, float* output, std::size_t) {
        NativeKernels::shading(parameter, input, output);
    });
}

void renderDistortion(benchmark::State& state) { runRenderer<DistortionRenderer>(state, distortionFor(state)); }

void renderShading(benchmark::State& state) { runRenderer<ShadingRenderer>(state, shadingFor(state)); }

void frames(benchmark::internal::Benchmark* benchmark) {
    benchmark->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime()->UseRealTime();
    for (const auto& [width, height] : {std::pair{256, 135}, {2048, 1152}, {3840, 2160}, {4096, 2160}, {8192, 4320}})
        benchmark->Args({width, height});
}

} // namespace

BENCHMARK(copy)->Apply(frames);
BENCHMARK(nativeDistortion)->Apply(frames);
BENCHMARK_CAPTURE(distortionKernel, itemPerByte, Launch::perByte)->Apply(frames);
BENCHMARK_CAPTURE(distortionKernel, itemPerPixel, Launch::perPixel)->Apply(frames);
BENCHMARK(renderDistortion)->Apply(frames);
BENCHMARK(nativeShading)->Apply(frames);
BENCHMARK_CAPTURE(shadingKernel, itemPerByte, Launch::perByte)->Apply(frames);
BENCHMARK_CAPTURE(shadingKernel, itemPerPixel, Launch::perPixel)->Apply(frames);
BENCHMARK(renderShading)->Apply(frames);
