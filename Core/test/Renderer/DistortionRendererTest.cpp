#include "Renderer/DistortionRenderer.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "Renderer/NotRenderedException.h"
#include "Support/OpenCLDevice.h"
#include "Support/ReferenceRenderer.h"
#include "Support/TestFrame.h"

namespace {

using Renderer::DistortionParameter;

class DistortionOnDevice : public OnOpenCLDevice {
protected:
    static DistortionParameter parameterFor(std::uint32_t width, std::uint32_t height) {
        DistortionParameter parameter;
        parameter.currentWidth = parameter.originalWidth = width;
        parameter.currentHeight = parameter.originalHeight = height;
        parameter.imageRadius = parameter.frameImageRadius = 15.0f;
        return parameter;
    }

    static std::vector<float> render(const DistortionParameter& parameter, const std::vector<float>& input) {
        Renderer::DistortionRenderer renderer;
        renderer.parameter = parameter;
        std::vector<float> output(std::size_t{parameter.currentWidth} * parameter.currentHeight * 4, -1.0f);
        renderer.render(parameter.renderMap ? nullptr : input.data(), output.data(), output.size() * sizeof(float));
        return output;
    }

    // Float positions of frames up to 100 px are exact to about 1e-5 px, and neighbours differ by at most 4.
    static void expectReference(const DistortionParameter& parameter) {
        const std::vector<float> input = TestFrame::noise(parameter.currentWidth, parameter.currentHeight);
        const std::vector<float> output = render(parameter, input);
        const std::vector<double> reference = ReferenceRenderer::render(parameter, input);
        ASSERT_EQ(output.size(), reference.size());
        for (std::size_t i = 0; i < output.size(); i++) ASSERT_NEAR(double{output[i]}, reference[i], 1e-4) << i;
    }
};

} // namespace

TEST_F(DistortionOnDevice, IdentityCoefficientsReproduceTheInputExactly) {
    DistortionParameter parameter = parameterFor(17, 9);
    parameter.a1 = 1.0f;
    const std::vector<float> input = TestFrame::noise(17, 9);
    EXPECT_EQ(render(parameter, input), input);
}

TEST_F(DistortionOnDevice, CopiesTheCentrePixelOfAnOddSizedFrame) {
    DistortionParameter parameter = parameterFor(5, 3);
    parameter.a1 = 0.7f;
    parameter.a2 = 0.01f;
    const std::vector<float> input = TestFrame::noise(5, 3);
    const std::vector<float> output = render(parameter, input);
    const std::size_t centre = (1 * 5 + 2) * 4;
    EXPECT_EQ(std::vector<float>(&output[centre], &output[centre + 4]),
              std::vector<float>(&input[centre], &input[centre + 4]));
}

TEST_F(DistortionOnDevice, HalfAPixelOutsideTheFrameShowsHalfTheIntensityInAllFourChannels) {
    DistortionParameter parameter = parameterFor(3, 1);
    parameter.a1 = 1.5f; // the outer pixels lie 1 px from the centre, their sources 1.5 px
    const std::vector<float> output = render(parameter, TestFrame::constant(3, 1, 1.0f));
    const std::vector<float> expected = {0.5f, 0.5f, 0.5f, 0.5f, 1.0f, 1.0f, 1.0f, 1.0f, 0.5f, 0.5f, 0.5f, 0.5f};
    for (std::size_t i = 0; i < expected.size(); i++) EXPECT_FLOAT_EQ(output[i], expected[i]) << i;
}

TEST_F(DistortionOnDevice, OneOrMorePixelsOutsideTheFrameShowsNothing) {
    DistortionParameter parameter = parameterFor(3, 1);
    parameter.a1 = 3.0f;
    const std::vector<float> output = render(parameter, TestFrame::constant(3, 1, 1.0f));
    EXPECT_EQ(output, (std::vector<float>{0, 0, 0, 0, 1, 1, 1, 1, 0, 0, 0, 0}));
}

TEST_F(DistortionOnDevice, RemovesBarrelDistortionAsTheReferenceDoes) {
    DistortionParameter parameter = parameterFor(61, 40);
    parameter.a1 = 0.93f;
    parameter.a2 = 0.002f;
    parameter.a3 = 0.0001f;
    parameter.a4 = 1e-6f;
    parameter.a5 = 1e-7f;
    parameter.a6 = 1e-8f;
    expectReference(parameter);
}

TEST_F(DistortionOnDevice, ShowsTheBordersFadingAsTheReferenceDoes) {
    DistortionParameter parameter = parameterFor(40, 61);
    parameter.a1 = 1.3f;
    parameter.a3 = -0.0002f;
    expectReference(parameter);
}

TEST_F(DistortionOnDevice, MirrorsThePictureWithNegativeFactorsAsTheReferenceDoes) {
    DistortionParameter parameter = parameterFor(33, 8);
    parameter.a1 = -0.9f;
    expectReference(parameter);
}

TEST_F(DistortionOnDevice, APixelWithoutASourcePositionIsTransparentBlack) {
    for (const float coefficient : {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity(),
                                    -std::numeric_limits<float>::infinity(), 3e38f}) {
        DistortionParameter parameter = parameterFor(8, 8); // even: no pixel at distance 0
        parameter.a3 = coefficient;
        EXPECT_EQ(render(parameter, TestFrame::noise(8, 8)), TestFrame::constant(8, 8, 0.0f)) << coefficient;
    }
}

TEST_F(DistortionOnDevice, ANotANumberSpreadsToTheNeighboursThatSampleItOnly) {
    DistortionParameter parameter = parameterFor(64, 1);
    parameter.a1 = 0.99f;
    std::vector<float> input = TestFrame::constant(64, 1, 1.0f);
    input[20 * 4] = std::nanf("");
    const std::vector<float> output = render(parameter, input);
    int spread = 0;
    for (const float value : output) spread += std::isnan(value) ? 1 : 0;
    EXPECT_EQ(spread, 2) << "the two pixels whose sources lie to its left and right";
}

TEST_F(DistortionOnDevice, AnInfiniteNeighbourOfWeightZeroIsNotRead) {
    DistortionParameter parameter = parameterFor(5, 1);
    parameter.a1 = 1.0f;
    std::vector<float> input = TestFrame::constant(5, 1, 1.0f);
    for (std::size_t channel = 0; channel < 4; channel++)
        input[3 * 4 + channel] = std::numeric_limits<float>::infinity();
    EXPECT_EQ(render(parameter, input), input);
}

TEST_F(DistortionOnDevice, TheMapHoldsTheIdentityCoordinatesWhateverTheCoefficients) {
    DistortionParameter parameter = parameterFor(4, 2);
    parameter.renderMap = true;
    parameter.a1 = 0.5f;
    parameter.a4 = std::nanf("");
    EXPECT_EQ(render(parameter, {}),
              (std::vector<float>{0, 0,    0, 1, 0.25f, 0,    0, 1, 0.5f, 0,    0, 1, 0.75f, 0,    0, 1, //
                                  0, 0.5f, 0, 1, 0.25f, 0.5f, 0, 1, 0.5f, 0.5f, 0, 1, 0.75f, 0.5f, 0, 1}));
}

TEST_F(DistortionOnDevice, TellsAFrameThatIsTooLargeForTheDeviceAndRendersTheNextOne) {
    Renderer::DistortionRenderer renderer;
    renderer.parameter = parameterFor(1, 1);
    renderer.parameter.a1 = 1.0f;
    const float input[4] = {1.0f, 2.0f, 3.0f, 4.0f};
    float output[4] = {};
    // No device has an exbibyte.
    EXPECT_THROW(renderer.render(input, output, 1ul << 60), Renderer::NotRenderedException);
    renderer.render(input, output, sizeof(output));
    EXPECT_EQ(std::vector<float>(output, output + 4), std::vector<float>(input, input + 4));
}
