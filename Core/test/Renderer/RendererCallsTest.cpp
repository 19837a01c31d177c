#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "Renderer/DistortionRenderer.h"
#include "Renderer/NotRenderedException.h"
#include "Renderer/OpenCL/DistortionKernel.h"
#include "Renderer/OpenCL/ShadingKernel.h"
#include "Renderer/ShadingRenderer.h"
#include "Support/FakeOpenCL.h"

namespace {

using Calls = std::vector<std::string>;

constexpr unsigned long bufferSize = 16;
const float input[4] = {};
float output[4] = {};

template <typename Parameter>
void fill(Parameter& parameter) {
    parameter.currentWidth = 1;
    parameter.currentHeight = 2;
    parameter.originalWidth = 3;
    parameter.originalHeight = 4;
    parameter.imageRadius = 5.0f;
    parameter.a0 = 10.0f;
    parameter.a1 = 11.0f;
    parameter.a2 = 12.0f;
    parameter.a3 = 13.0f;
    parameter.a4 = 14.0f;
    parameter.a5 = 15.0f;
    parameter.a6 = 16.0f;
}

struct DistortionUnderTest : Renderer::DistortionRenderer {
    DistortionUnderTest() {
        fill(parameter);
        parameter.frameImageRadius = 6.0f;
        fakeOpenCL.calls.clear();
    }
};

struct ShadingUnderTest : Renderer::ShadingRenderer {
    ShadingUnderTest() {
        fill(parameter);
        parameter.reverse = 1;
        parameter.gamma = 2.5f;
        fakeOpenCL.calls.clear();
    }
};

template <typename RendererUnderTest>
std::string descriptionOfRendering(RendererUnderTest& renderer) {
    try {
        renderer.render(renderer.parameter.renderMap ? nullptr : input, output, bufferSize);
    } catch (const Renderer::NotRenderedException& exception) {
        return exception.detailedDescription();
    }
    return "no exception";
}

// The arguments from `first` on, as they must lie in memory.
std::string sharedArguments(cl_uint first) {
    std::string expected;
    const std::uint32_t lengths[] = {1, 2, 3, 4};
    const float values[] = {5, 10, 11, 12, 13, 14, 15, 16};
    expected.append(reinterpret_cast<const char*>(lengths), sizeof(lengths));
    expected.append(reinterpret_cast<const char*>(values), sizeof(values));
    std::string actual;
    for (cl_uint i = first; i < first + 12; i++) actual += fakeOpenCL.kernelArguments[i];
    return actual == expected ? "as expected" : "different";
}

float floatArgument(cl_uint index) {
    float value = 0;
    EXPECT_EQ(fakeOpenCL.kernelArguments[index].size(), sizeof(value));
    std::memcpy(&value, fakeOpenCL.kernelArguments[index].data(), sizeof(value));
    return value;
}

} // namespace

TEST(DistortionRenderer, BuildsItsProgramForTheImageKernelFirstAndForTheMapKernelSecond) {
    const Renderer::DistortionRenderer renderer;
    EXPECT_EQ(fakeOpenCL.callsOf("clCreateProgramWithSource"),
              Calls(2, "clCreateProgramWithSource(1, " + std::string(Renderer::distortionKernelSource) + ")"));
    EXPECT_EQ(fakeOpenCL.callsOf("clCreateKernel"),
              (Calls{"clCreateKernel(distortion)", "clCreateKernel(distortionMap)"}));
}

TEST(DistortionRenderer, GivesItsParametersToTheImageKernelAfterTheTwoBuffers) {
    DistortionUnderTest renderer;
    renderer.render(input, output, bufferSize);
    EXPECT_EQ(sharedArguments(2), "as expected");
    EXPECT_EQ(fakeOpenCL.callsOf("clSetKernelArg").size(), 14u);
}

TEST(DistortionRenderer, GivesItsParametersAndAnUnusedZeroToTheMapKernelAfterTheOneBuffer) {
    DistortionUnderTest renderer;
    renderer.parameter.renderMap = true;
    renderer.render(nullptr, output, bufferSize);
    EXPECT_EQ(sharedArguments(1), "as expected");
    EXPECT_EQ(fakeOpenCL.kernelArguments[13], std::string(1, '\0'));
}

TEST(DistortionRenderer, TellsWhyAFrameWasNotRendered) {
    DistortionUnderTest renderer;
    fakeOpenCL.statuses["clEnqueueNDRangeKernel"][1] = -5;
    EXPECT_EQ(descriptionOfRendering(renderer),
              "An issue did occur during execution of the distortion correction renderer.\n"
              "Reason: Failed to execute kernel! (-5)\nData Size: 16 bytes\n");
}

TEST(DistortionRenderer, TellsAnyStandardException) {
    DistortionUnderTest renderer;
    fakeOpenCL.throwingFunction = "clEnqueueWriteBuffer";
    EXPECT_EQ(descriptionOfRendering(renderer),
              "An issue did occur during execution of the distortion correction renderer.\n"
              "Reason: std::bad_alloc\nData Size: 16 bytes\n");
}

TEST(DistortionRenderer, StaysUsableAfterAFailure) {
    DistortionUnderTest renderer;
    fakeOpenCL.statuses["clFinish"][1] = -5;
    descriptionOfRendering(renderer);
    EXPECT_EQ(descriptionOfRendering(renderer), "no exception");
}

TEST(DistortionRenderer, TellsInvalidRadiiWhenItRenders) {
    DistortionUnderTest renderer;
    renderer.parameter.imageRadius = 0.0f;
    EXPECT_EQ(descriptionOfRendering(renderer),
              "An issue did occur during execution of the distortion correction renderer.\n"
              "Reason: Image radii of 0 mm and 6 mm are invalid and need to be greater than zero.\n"
              "Data Size: 16 bytes\n");
}

TEST(DistortionRenderer, ReportsTheStatusOfItsLastArgument) {
    DistortionUnderTest renderer;
    fakeOpenCL.statuses["clSetKernelArg"][14] = -51;
    EXPECT_EQ(descriptionOfRendering(renderer),
              "An issue did occur during execution of the distortion correction renderer.\n"
              "Reason: Failed to set kernel specific arguments! (-51)\nData Size: 16 bytes\n");
}

TEST(DistortionRenderer, ReportsAnEarlierArgumentThatFailsAsALaunchThatIsRefused) {
    DistortionUnderTest renderer;
    fakeOpenCL.statuses["clSetKernelArg"][3] = -51;
    EXPECT_EQ(descriptionOfRendering(renderer),
              "An issue did occur during execution of the distortion correction renderer.\n"
              "Reason: Failed to execute kernel! (-52)\nData Size: 16 bytes\n");
}

TEST(DistortionRendererDeathTest, StopsOnAnInputForAMap) {
    DistortionUnderTest renderer;
    renderer.parameter.renderMap = true;
    EXPECT_DEATH(renderer.render(input, output, bufferSize), "Assertion failed: !inputBuffer\n$");
}

TEST(DistortionRendererDeathTest, StopsOnAMissingInputForAnImage) {
    DistortionUnderTest renderer;
    EXPECT_DEATH(renderer.render(nullptr, output, bufferSize), "Assertion failed: inputBuffer\n$");
}

TEST(ShadingRenderer, BuildsItsProgramForTheImageKernelFirstAndForTheMapKernelSecond) {
    const Renderer::ShadingRenderer renderer;
    EXPECT_EQ(fakeOpenCL.callsOf("clCreateProgramWithSource"),
              Calls(2, "clCreateProgramWithSource(1, " + std::string(Renderer::shadingKernelSource) + ")"));
    EXPECT_EQ(fakeOpenCL.callsOf("clCreateKernel"), (Calls{"clCreateKernel(shading)", "clCreateKernel(shadingMap)"}));
}

TEST(ShadingRenderer, GivesItsParametersToTheImageKernelAfterTheTwoBuffers) {
    ShadingUnderTest renderer;
    renderer.render(input, output, bufferSize);
    EXPECT_EQ(sharedArguments(2), "as expected");
    EXPECT_EQ(fakeOpenCL.kernelArguments[14], std::string(1, '\1'));
    EXPECT_EQ(floatArgument(15), 2.5f);
}

TEST(ShadingRenderer, GivesTheSameParametersToTheMapKernelAfterTheOneBuffer) {
    ShadingUnderTest renderer;
    renderer.parameter.renderMap = true;
    renderer.render(nullptr, output, bufferSize);
    EXPECT_EQ(sharedArguments(1), "as expected");
    EXPECT_EQ(fakeOpenCL.kernelArguments[13], std::string(1, '\1'));
    EXPECT_EQ(floatArgument(14), 2.5f);
}

TEST(ShadingRenderer, TellsWhyAFrameWasNotRendered) {
    ShadingUnderTest renderer;
    fakeOpenCL.statuses["clEnqueueReadBuffer"][1] = -5;
    EXPECT_EQ(descriptionOfRendering(renderer),
              "An issue did occur during execution of the shading correction renderer.\n"
              "Reason: Failed to read output in device memory! (-5)\nData Size: 16 bytes\n");
}

TEST(ShadingRenderer, ReportsTheStatusOfItsLastArgument) {
    ShadingUnderTest renderer;
    fakeOpenCL.statuses["clSetKernelArg"][16] = -51;
    EXPECT_EQ(descriptionOfRendering(renderer),
              "An issue did occur during execution of the shading correction renderer.\n"
              "Reason: Failed to set kernel specific arguments! (-51)\nData Size: 16 bytes\n");
}

TEST(ShadingRenderer, ReportsAnEarlierArgumentThatFailsAsALaunchThatIsRefused) {
    ShadingUnderTest renderer;
    fakeOpenCL.statuses["clSetKernelArg"][15] = -51;
    EXPECT_EQ(descriptionOfRendering(renderer),
              "An issue did occur during execution of the shading correction renderer.\n"
              "Reason: Failed to execute kernel! (-52)\nData Size: 16 bytes\n");
}

TEST(ShadingRenderer, TellsAnyStandardException) {
    ShadingUnderTest renderer;
    fakeOpenCL.throwingFunction = "clEnqueueWriteBuffer";
    EXPECT_EQ(descriptionOfRendering(renderer),
              "An issue did occur during execution of the shading correction renderer.\n"
              "Reason: std::bad_alloc\nData Size: 16 bytes\n");
}

TEST(ShadingRenderer, StaysUsableAfterAFailure) {
    ShadingUnderTest renderer;
    fakeOpenCL.statuses["clCreateBuffer"][1] = -4;
    descriptionOfRendering(renderer);
    EXPECT_EQ(descriptionOfRendering(renderer), "no exception");
}

TEST(ShadingRenderer, DoesNotCheckItsParameters) {
    ShadingUnderTest renderer;
    renderer.parameter.imageRadius = -1.0f;
    EXPECT_EQ(descriptionOfRendering(renderer), "no exception");
}

TEST(ShadingRenderer, NeverChangesTheFrameSize) {
    ShadingUnderTest renderer;
    unsigned int width = 0, height = 0;
    renderer.frameSize(width, height);
    EXPECT_EQ(width, 1u);
    EXPECT_EQ(height, 2u);
}

TEST(ShadingRendererDeathTest, StopsOnAnInputForAMap) {
    ShadingUnderTest renderer;
    renderer.parameter.renderMap = true;
    EXPECT_DEATH(renderer.render(input, output, bufferSize), "Assertion failed: !inputBuffer\n$");
}

TEST(ShadingRendererDeathTest, StopsOnAMissingInputForAnImage) {
    ShadingUnderTest renderer;
    EXPECT_DEATH(renderer.render(nullptr, output, bufferSize), "Assertion failed: inputBuffer\n$");
}
