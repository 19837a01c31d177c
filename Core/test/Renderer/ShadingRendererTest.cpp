#include "Renderer/ShadingRenderer.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "Support/OpenCLDevice.h"
#include "Support/ReferenceRenderer.h"
#include "Support/TestFrame.h"

namespace {

using Renderer::ShadingParameter;

class ShadingOnDevice : public OnOpenCLDevice {
protected:
    static ShadingParameter parameterFor(std::uint32_t width, std::uint32_t height) {
        ShadingParameter parameter;
        parameter.currentWidth = parameter.originalWidth = width;
        parameter.currentHeight = parameter.originalHeight = height;
        parameter.imageRadius = 15.0f;
        return parameter;
    }

    static std::vector<float> render(const ShadingParameter& parameter, const std::vector<float>& input) {
        Renderer::ShadingRenderer renderer;
        renderer.parameter = parameter;
        std::vector<float> output(std::size_t{parameter.currentWidth} * parameter.currentHeight * 4, -1.0f);
        renderer.render(parameter.renderMap ? nullptr : input.data(), output.data(), output.size() * sizeof(float));
        return output;
    }

    // About ten roundings of 6e-8 each in the factor and two powers.
    static void expectReference(const ShadingParameter& parameter) {
        const std::vector<float> input = TestFrame::noise(parameter.currentWidth, parameter.currentHeight);
        const std::vector<float> output = render(parameter, input);
        const std::vector<double> reference = ReferenceRenderer::render(parameter, input);
        ASSERT_EQ(output.size(), reference.size());
        for (std::size_t i = 0; i < output.size(); i++)
            ASSERT_NEAR(double{output[i]}, reference[i], 4e-6 * std::fabs(reference[i])) << i;
    }

    // One pixel (0.2, 0.5, 2, 0.75) under an illumination of 50 %.
    static std::vector<float> renderUnderHalfIllumination(std::uint8_t reverse, float gamma) {
        ShadingParameter parameter = parameterFor(1, 1);
        parameter.a0 = 50.0f;
        parameter.reverse = reverse;
        parameter.gamma = gamma;
        return render(parameter, {0.2f, 0.5f, 2.0f, 0.75f});
    }

    static ShadingParameter fallOff() {
        ShadingParameter parameter = parameterFor(61, 40);
        parameter.a0 = 100.0f;
        parameter.a1 = -0.4f;
        parameter.a2 = -0.1f;
        parameter.a3 = 0.001f;
        parameter.a4 = -1e-4f;
        parameter.a5 = 1e-6f;
        parameter.a6 = 1e-7f;
        return parameter;
    }
};

} // namespace

TEST_F(ShadingOnDevice, AnIlluminationOfOneHundredPercentPassesTheImageUnchanged) {
    ShadingParameter parameter = parameterFor(5, 3);
    parameter.a0 = 100.0f;
    const std::vector<float> input = TestFrame::noise(5, 3);
    EXPECT_EQ(render(parameter, input), input);
}

TEST_F(ShadingOnDevice, AnIlluminationOfOneHundredPercentMakesAMapOfOnes) {
    ShadingParameter parameter = parameterFor(5, 3);
    parameter.a0 = 100.0f;
    parameter.renderMap = true;
    EXPECT_EQ(render(parameter, {}), TestFrame::constant(5, 3, 1.0f));
}

TEST_F(ShadingOnDevice, RemovingHalfIlluminationDoublesTheColoursAndKeepsAlpha) {
    EXPECT_EQ(renderUnderHalfIllumination(0, 1.0f), (std::vector<float>{0.4f, 1.0f, 4.0f, 0.75f}));
}

TEST_F(ShadingOnDevice, AddingHalfIlluminationHalvesTheColoursAndKeepsAlpha) {
    EXPECT_EQ(renderUnderHalfIllumination(1, 1.0f), (std::vector<float>{0.1f, 0.25f, 1.0f, 0.75f}));
}

TEST_F(ShadingOnDevice, AnyReverseButZeroAddsShading) {
    EXPECT_EQ(renderUnderHalfIllumination(255, 1.0f), renderUnderHalfIllumination(1, 1.0f));
}

TEST_F(ShadingOnDevice, GammaMakesTheFactorWorkOnLinearValues) {
    const std::vector<float> output = renderUnderHalfIllumination(0, 2.0f);
    const float root = std::sqrt(2.0f); // coded values grow by 2^(1 ÷ gamma)
    EXPECT_NEAR(output[0], 0.2f * root, 1e-6f);
    EXPECT_NEAR(output[1], 0.5f * root, 1e-6f);
    EXPECT_NEAR(output[2], 2.0f * root, 1e-6f);
    EXPECT_EQ(output[3], 0.75f);
}

TEST_F(ShadingOnDevice, NegativeValuesBecomeNotANumberUnderAGamma) {
    ShadingParameter parameter = parameterFor(1, 1);
    parameter.a0 = 100.0f;
    parameter.gamma = 2.2f;
    const std::vector<float> output = render(parameter, {-1.0f, 0.5f, 0.5f, -1.0f});
    EXPECT_TRUE(std::isnan(output[0]));
    EXPECT_EQ(output[3], -1.0f) << "alpha keeps its value";
}

TEST_F(ShadingOnDevice, NegativeValuesAreMultipliedLikeOthersWithoutAGamma) {
    ShadingParameter parameter = parameterFor(1, 1);
    parameter.a0 = 50.0f;
    EXPECT_EQ(render(parameter, {-1.0f, 0.5f, 0.0f, 1.0f}), (std::vector<float>{-2.0f, 1.0f, 0.0f, 1.0f}));
}

TEST_F(ShadingOnDevice, NoIlluminationIsComputedThroughToInfinityAndNotANumber) {
    const std::vector<float> output = render(parameterFor(1, 1), {1.0f, 0.0f, -1.0f, 1.0f});
    EXPECT_EQ(output[0], INFINITY);
    EXPECT_TRUE(std::isnan(output[1]));
    EXPECT_EQ(output[2], -INFINITY);
    EXPECT_EQ(output[3], 1.0f);
}

TEST_F(ShadingOnDevice, RemovesAFallOffAsTheReferenceDoes) { expectReference(fallOff()); }

TEST_F(ShadingOnDevice, AddsAFallOffAsTheReferenceDoes) {
    ShadingParameter parameter = fallOff();
    parameter.reverse = 1;
    expectReference(parameter);
}

TEST_F(ShadingOnDevice, RemovesAFallOffUnderAGammaAsTheReferenceDoes) {
    ShadingParameter parameter = fallOff();
    parameter.gamma = 2.2f;
    expectReference(parameter);
}

TEST_F(ShadingOnDevice, MapsAFallOffAsTheReferenceDoesWhateverTheGamma) {
    ShadingParameter parameter = fallOff();
    parameter.renderMap = true;
    parameter.gamma = 2.2f;
    expectReference(parameter);
}
