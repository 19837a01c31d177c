// Runs all four kernels at small, odd sizes. Silent: run under a checking OpenCL device, whatever is printed is a
// fault.

#include <cstdint>
#include <utility>
#include <vector>

#include "Renderer/DistortionRenderer.h"
#include "Renderer/ShadingRenderer.h"

namespace {

using Sizes = std::vector<std::pair<std::uint32_t, std::uint32_t>>;

template <typename AnyRenderer>
void render(AnyRenderer& renderer, const Sizes& sizes) {
    for (const auto& [width, height] : sizes) {
        renderer.parameter.currentWidth = renderer.parameter.originalWidth = width;
        renderer.parameter.currentHeight = renderer.parameter.originalHeight = height;
        const std::vector<float> input(std::size_t{width} * height * 4, 0.5f);
        std::vector<float> output(input.size());
        for (const bool map : {false, true}) {
            renderer.parameter.renderMap = map;
            renderer.render(map ? nullptr : input.data(), output.data(), output.size() * sizeof(float));
        }
    }
}

} // namespace

int main() {
    const Sizes sizes = {{1, 1}, {1, 7}, {17, 3}, {64, 48}};

    Renderer::DistortionRenderer distortion;
    distortion.parameter.imageRadius = distortion.parameter.frameImageRadius = 15.0f;
    distortion.parameter.a1 = 1.1f; // samples inside, across and beyond the border
    distortion.parameter.a3 = 1e-4f;
    render(distortion, sizes);

    Renderer::ShadingRenderer shading;
    shading.parameter.imageRadius = 15.0f;
    shading.parameter.a0 = 100.0f;
    shading.parameter.a2 = -0.1f;
    for (const float gamma : {1.0f, 2.2f}) {
        shading.parameter.gamma = gamma;
        render(shading, sizes);
    }
}
