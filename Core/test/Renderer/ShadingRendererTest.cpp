#include "Renderer/ShadingRenderer.h"

#include <gtest/gtest.h>

#include <vector>

TEST(ShadingRenderer, AnIlluminationOfOneHundredPercentPassesTheImageUnchanged) {
    Renderer::ShadingRenderer renderer;
    renderer.parameter.currentWidth = 5;
    renderer.parameter.currentHeight = 3;
    renderer.parameter.imageRadius = 15.0f;
    renderer.parameter.a0 = 100.0f;
    std::vector<float> input(5 * 3 * 4), output(input.size());
    for (std::size_t i = 0; i < input.size(); i++) input[i] = static_cast<float>(i);
    renderer.render(input.data(), output.data(), input.size() * sizeof(float));
    EXPECT_EQ(output, input);
}
