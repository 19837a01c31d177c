#include "Renderer/DistortionRenderer.h"

#include <gtest/gtest.h>

#include <vector>

TEST(DistortionRenderer, IdentityCoefficientsReproduceTheInputExactly) {
    Renderer::DistortionRenderer renderer;
    renderer.parameter.currentWidth = renderer.parameter.originalWidth = 5;
    renderer.parameter.currentHeight = renderer.parameter.originalHeight = 3;
    renderer.parameter.imageRadius = renderer.parameter.frameImageRadius = 15.0f;
    renderer.parameter.a1 = 1.0f;
    std::vector<float> input(5 * 3 * 4), output(input.size());
    for (std::size_t i = 0; i < input.size(); i++) input[i] = static_cast<float>(i);
    renderer.render(input.data(), output.data(), input.size() * sizeof(float));
    EXPECT_EQ(output, input);
}
