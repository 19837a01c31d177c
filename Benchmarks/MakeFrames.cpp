// Makes what the whole-job benchmarks read: a clip of noisy half-float frames, its correction file, and for other
// programs a displacement map and a gain map of the same size.
#include <CLI/CLI.hpp>
#include <cstdint>
#include <exception>
#include <filesystem>
#include <iostream>
#include <string>
#include <vector>

#include "BenchmarkClip.h"
#include "ExrClip.h"
#include "Noise.h"
#include "Renderer/NativeKernels.h"

namespace {

void fill(ExrClip::Frame& frame, int number) {
    Noise noise(static_cast<std::uint32_t>(number + 1));
    std::size_t index = 0;
    for (int layer = 0; layer < frame.layers; layer++)
        for (int y = 0; y < frame.height; y++)
            for (int x = 0; x < frame.width; x++) {
                // A bright middle, colours that change across the picture, and noise that grows with the light.
                const float across = static_cast<float>(x) / static_cast<float>(frame.width) - 0.5f;
                const float down = static_cast<float>(y) / static_cast<float>(frame.height) - 0.5f;
                const float light = 0.9f - 1.5f * (across * across + down * down);
                for (const float tint : {0.6f + 0.4f * across, 0.5f, 0.6f + 0.4f * down})
                    frame.values[index++] = half(light * tint * (1.0f + 0.03f * noise.next()));
                frame.values[index++] = half(1.0f);
            }
}

void writeMaps(const std::string& displacement, const std::string& gain, int width, int height) {
    Renderer::DistortionParameter parameter;
    parameter.currentWidth = static_cast<std::uint32_t>(width);
    parameter.currentHeight = static_cast<std::uint32_t>(height);
    parameter.imageRadius = 15.0f;
    parameter.a1 = 0.97f;
    parameter.a2 = 0.002f;
    parameter.a3 = 1e-4f;
    const std::size_t count = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    std::vector<float> xs(count), ys(count), values(count * 3), gains(count * 4, 1.0f);
    NativeKernels::positions(parameter, xs.data(), ys.data());
    for (std::size_t i = 0; i < count; i++) {
        values[i * 3] = (xs[i] + 0.5f) / static_cast<float>(width);
        values[i * 3 + 1] = (ys[i] + 0.5f) / static_cast<float>(height);
        const float distance = values[i * 3] - 0.5f;
        gains[i * 4] = gains[i * 4 + 1] = gains[i * 4 + 2] = 1.0f + distance * distance;
    }
    if (!displacement.empty()) ExrClip::writeFloat(displacement, width, height, 3, values);
    if (!gain.empty()) ExrClip::writeFloat(gain, width, height, 4, gains);
}

} // namespace

int main(int argumentCount, char** arguments) {
    std::string folder, compression = "zip", displacement, gain;
    ExrClip::Frame frame;
    frame.width = 4096;
    frame.height = 2160;
    int count = 48, distinct = 4;
    CLI::App app("Makes a clip of noisy frames, A001C001.1001.exr onwards, with its correction file.");
    app.add_option("folder", folder)->required();
    app.add_option("--width", frame.width, "px")->check(CLI::Range(1, 16384));
    app.add_option("--height", frame.height, "px")->check(CLI::Range(1, 16384));
    app.add_option("--layers", frame.layers, "RGBA layers of a frame")->check(CLI::Range(1, 64));
    app.add_option("--frames", count)->check(CLI::Range(1, 100000));
    app.add_option("--distinct", distinct, "different frames; the others are links to them")
        ->check(CLI::Range(1, 1000));
    app.add_option("--compression", compression);
    app.add_option("--displacement-map", displacement, "also write this map for a warp by another program");
    app.add_option("--gain-map", gain, "also write this map for a multiplication by another program");
    CLI11_PARSE(app, argumentCount, arguments);
    try {
        const Imf::Compression method = ExrClip::compression(compression);
        std::filesystem::create_directories(folder);
        const auto path = [&](int index) { return folder + "/A001C001." + std::to_string(1001 + index) + ".exr"; };
        frame.values.resize(static_cast<std::size_t>(frame.width) * static_cast<std::size_t>(frame.height) * 4 *
                            static_cast<std::size_t>(frame.layers));
        for (int index = 0; index < count; index++) {
            if (index < distinct) {
                fill(frame, index);
                ExrClip::write(path(index), frame, method);
            } else {
                std::filesystem::create_hard_link(path(index % distinct), path(index));
            }
        }
        BenchmarkClip::writeCorrectionFile(folder + "/A001C001.olcf", frame.width, frame.height,
                                           static_cast<unsigned int>(count));
        writeMaps(displacement, gain, frame.width, frame.height);
    } catch (const std::exception& exception) {
        std::cerr << exception.what() << '\n';
        return 4;
    }
}
