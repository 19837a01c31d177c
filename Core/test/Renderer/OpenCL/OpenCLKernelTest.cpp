#include "Renderer/OpenCL/OpenCLKernel.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <stdexcept>

#include "Exception/Exception.h"
#include "Renderer/OpenCL/OpenCLKernelHelper.h"
#include "Support/FakeOpenCL.h"

namespace {

using Kernel = Renderer::OpenCLKernel<float>;
using Calls = std::vector<std::string>;

int setNothing(cl_kernel) { return CL_SUCCESS; }

std::unique_ptr<Kernel> makeKernel() { return std::make_unique<Kernel>("source", "name", setNothing); }

std::string messageOfMaking() {
    try {
        makeKernel();
    } catch (const Exception& exception) {
        return exception.what();
    }
    return "no exception";
}

// One pixel.
constexpr unsigned long bufferSize = 16;
const float input[4] = {};
float output[4] = {};

std::string messageOfExecuting(Kernel& kernel, bool withInput) {
    try {
        if (withInput)
            kernel.execute(input, output, bufferSize);
        else
            kernel.execute(output, bufferSize);
    } catch (const Exception& exception) {
        return exception.what();
    }
    return "no exception";
}

} // namespace

TEST(OpenCLKernel, IsMadeForTheChosenDeviceInAFixedOrder) {
    fakeOpenCL.platforms[0].devices = {FakeOpenCL::Device(), FakeOpenCL::Device{.type = CL_DEVICE_TYPE_GPU}};
    Renderer::OpenCLKernelHelper::idOfMostPowerfulDevice();
    const std::size_t callsOfTheChoice = fakeOpenCL.calls.size();
    fakeOpenCL.calls.clear();

    const auto kernel = makeKernel();
    const Calls calls(fakeOpenCL.calls.begin() + static_cast<std::ptrdiff_t>(callsOfTheChoice), fakeOpenCL.calls.end());
    EXPECT_EQ(calls,
              (Calls{"clCreateContext(none, 1, 1002)", "clCreateCommandQueue(1002, 0)",
                     "clCreateProgramWithSource(1, source)", "clBuildProgram(0, none)", "clCreateKernel(name)"}));
}

TEST(OpenCLKernel, ReleasesEverythingInReverseOrder) {
    auto kernel = makeKernel();
    fakeOpenCL.calls.clear();
    kernel.reset();
    EXPECT_EQ(fakeOpenCL.calls,
              (Calls{"clReleaseKernel()", "clReleaseProgram()", "clReleaseCommandQueue()", "clReleaseContext()"}));
}

struct FailingStep {
    const char* function;
    cl_int status;
    const char* message;
};

class OpenCLKernelMaking : public testing::TestWithParam<FailingStep> {};

TEST_P(OpenCLKernelMaking, TellsTheFailedStepAndReleasesWhatWasMade) {
    fakeOpenCL.statuses[GetParam().function][0] = GetParam().status;
    EXPECT_EQ(messageOfMaking(), GetParam().message);
    EXPECT_EQ(fakeOpenCL.liveObjects, 0);
}

INSTANTIATE_TEST_SUITE_P(
    Steps, OpenCLKernelMaking,
    testing::Values(FailingStep{"clGetPlatformIDs", -1001,
                                "Failed to query number of all available platforms! (-1001)"},
                    FailingStep{"clGetDeviceInfo", -5, "No devices were found!"},
                    FailingStep{"clCreateContext", -2, "Failed to create context! (-2)"},
                    FailingStep{"clCreateCommandQueue", -6, "Failed to create command queue! (-6)"},
                    FailingStep{"clCreateProgramWithSource", -34, "Failed to create program! (-34)"},
                    FailingStep{"clBuildProgram", -11, "Failed to build program executable! (-11) ()"},
                    FailingStep{"clCreateKernel", -46, "Failed to create kernel! (-46)"}));

TEST(OpenCLKernel, TellsTheCompilersLogWhenTheProgramDoesNotBuild) {
    fakeOpenCL.statuses["clBuildProgram"][1] = CL_BUILD_PROGRAM_FAILURE;
    fakeOpenCL.buildLog = "line 1: expected ';'";
    EXPECT_EQ(messageOfMaking(), "Failed to build program executable! (-11) (line 1: expected ';')");
}

TEST(OpenCLKernel, ShowsTheFirst4096BytesOfTheCompilersLog) {
    for (const std::size_t length : {10u, 4095u, 4096u, 4097u, 20000u}) {
        fakeOpenCL.statuses["clBuildProgram"][0] = CL_BUILD_PROGRAM_FAILURE;
        fakeOpenCL.buildLog = std::string(length, 'x');
        const std::string shown(std::min<std::size_t>(length, 4096), 'x');
        EXPECT_EQ(messageOfMaking(), "Failed to build program executable! (-11) (" + shown + ")") << length;
    }
}

TEST(OpenCLKernel, TellsTheFailedBuildEvenWithoutALog) {
    fakeOpenCL.statuses["clBuildProgram"][1] = CL_BUILD_PROGRAM_FAILURE;
    fakeOpenCL.statuses["clGetProgramBuildInfo"][0] = CL_OUT_OF_HOST_MEMORY;
    EXPECT_EQ(messageOfMaking(), "Failed to build program executable! (-11) ()");
}

TEST(OpenCLKernel, RunsAnImageByOneWriteOneLaunchAndOneRead) {
    const auto kernel = makeKernel();
    fakeOpenCL.calls.clear();
    kernel->execute(input, output, bufferSize);
    EXPECT_EQ(fakeOpenCL.calls,
              (Calls{"clCreateBuffer(2, 16)", "clCreateBuffer(4, 16)", "clEnqueueWriteBuffer(blocking, 0, 16)",
                     "clSetKernelArg(0, 8)", "clSetKernelArg(1, 8)", "clGetKernelWorkGroupInfo(1001)",
                     "clEnqueueNDRangeKernel(1, 64, 64)", "clFinish()", "clEnqueueReadBuffer(blocking, 0, 16)",
                     "clReleaseMemObject()", "clReleaseMemObject()"}));
}

TEST(OpenCLKernel, GivesTheInputAsFirstAndTheOutputAsSecondArgument) {
    const auto kernel = makeKernel();
    fakeOpenCL.calls.clear();
    kernel->execute(input, output, bufferSize);
    // The output buffer is created first, so its handle is the smaller one.
    EXPECT_GT(fakeOpenCL.kernelArguments[0], fakeOpenCL.kernelArguments[1]);
}

TEST(OpenCLKernel, RunsAMapWithoutAnInputAndWithoutAWrite) {
    const auto kernel = makeKernel();
    fakeOpenCL.calls.clear();
    kernel->execute(output, bufferSize);
    EXPECT_EQ(fakeOpenCL.calls, (Calls{"clCreateBuffer(2, 16)", "clSetKernelArg(0, 8)",
                                       "clGetKernelWorkGroupInfo(1001)", "clEnqueueNDRangeKernel(1, 64, 64)",
                                       "clFinish()", "clEnqueueReadBuffer(blocking, 0, 16)", "clReleaseMemObject()"}));
}

TEST(OpenCLKernel, DeliversWhatTheDeviceWrote) {
    const auto kernel = makeKernel();
    const float pixel[4] = {1.0f, 2.0f, 3.0f, 4.0f};
    fakeOpenCL.deviceOutput.assign(reinterpret_cast<const char*>(pixel), sizeof(pixel));
    kernel->execute(output, bufferSize);
    EXPECT_EQ(std::vector<float>(output, output + 4), std::vector<float>(pixel, pixel + 4));
}

struct Launch {
    unsigned long bufferSize;
    std::size_t localSize;
    const char* call;
};

class OpenCLKernelLaunch : public testing::TestWithParam<Launch> {};

TEST_P(OpenCLKernelLaunch, HasOneItemPerByteRoundedUpToWholeGroups) {
    fakeOpenCL.kernelWorkGroupSize = GetParam().localSize;
    const auto kernel = makeKernel();
    kernel->execute(output, GetParam().bufferSize);
    EXPECT_EQ(fakeOpenCL.callsOf("clEnqueueNDRangeKernel"), Calls{GetParam().call});
}

// Buffers beyond 2^24 and 2^32 bytes: rounding in single precision would lose the multiple. The fake reads nothing.
INSTANTIATE_TEST_SUITE_P(Sizes, OpenCLKernelLaunch,
                         testing::Values(Launch{16, 16, "clEnqueueNDRangeKernel(1, 16, 16)"},
                                         Launch{17 * 16, 64, "clEnqueueNDRangeKernel(1, 320, 64)"},
                                         Launch{16, 4096, "clEnqueueNDRangeKernel(1, 4096, 4096)"},
                                         Launch{16777216 + 16, 1000, "clEnqueueNDRangeKernel(1, 16778000, 1000)"},
                                         Launch{141557760, 1024, "clEnqueueNDRangeKernel(1, 141557760, 1024)"},
                                         Launch{8589934592 + 16, 4096, "clEnqueueNDRangeKernel(1, 8589938688, 4096)"}));

TEST(OpenCLKernel, SetsItsOwnArgumentsAnewInEveryExecution) {
    int calls = 0;
    Kernel kernel("source", "name", [&](cl_kernel) {
        calls++;
        return CL_SUCCESS;
    });
    kernel.execute(output, bufferSize);
    kernel.execute(output, bufferSize);
    EXPECT_EQ(calls, 2);
}

TEST(OpenCLKernel, BuildsItsProgramOnceForAllExecutions) {
    const auto kernel = makeKernel();
    kernel->execute(output, bufferSize);
    kernel->execute(output, bufferSize);
    EXPECT_EQ(fakeOpenCL.callsOf("clBuildProgram").size(), 1u);
}

struct FailingExecution {
    const char* function;
    int number;
    cl_int status;
    bool withInput;
    const char* message;
};

class OpenCLKernelExecution : public testing::TestWithParam<FailingExecution> {};

TEST_P(OpenCLKernelExecution, TellsTheFailedStepAndReleasesItsBuffers) {
    const auto kernel = makeKernel();
    fakeOpenCL.calls.clear();
    const int liveObjects = fakeOpenCL.liveObjects;
    fakeOpenCL.statuses[GetParam().function][GetParam().number] = GetParam().status;
    EXPECT_EQ(messageOfExecuting(*kernel, GetParam().withInput), GetParam().message);
    EXPECT_EQ(fakeOpenCL.liveObjects, liveObjects);
}

TEST_P(OpenCLKernelExecution, LeavesTheKernelUsable) {
    const auto kernel = makeKernel();
    fakeOpenCL.calls.clear();
    fakeOpenCL.statuses[GetParam().function][GetParam().number] = GetParam().status;
    messageOfExecuting(*kernel, GetParam().withInput);
    fakeOpenCL.statuses.clear();
    EXPECT_EQ(messageOfExecuting(*kernel, GetParam().withInput), "no exception");
}

INSTANTIATE_TEST_SUITE_P(
    Steps, OpenCLKernelExecution,
    testing::Values(
        FailingExecution{"clCreateBuffer", 1, -61, false, "Failed to allocate device memory! (16 bytes)"},
        FailingExecution{"clCreateBuffer", 2, -4, true, "Failed to allocate device memory! (16 bytes)"},
        FailingExecution{"clEnqueueWriteBuffer", 1, -5, true, "Failed to write to input in device memory! (-5)"},
        FailingExecution{"clSetKernelArg", 1, -38, true, "Failed to set input and output kernel arguments! (-38)"},
        FailingExecution{"clSetKernelArg", 2, -49, true, "Failed to set input and output kernel arguments! (-49)"},
        FailingExecution{"clSetKernelArg", 1, -38, false, "Failed to set output kernel argument! (-38)"},
        FailingExecution{"clGetKernelWorkGroupInfo", 1, -33, false, "Failed to retrieve kernel work group info! (-33)"},
        FailingExecution{"clEnqueueNDRangeKernel", 1, -52, true, "Failed to execute kernel! (-52)"},
        FailingExecution{"clFinish", 1, -5, true, "Failed to execute kernel! (-5)"},
        FailingExecution{"clEnqueueReadBuffer", 1, -5, true, "Failed to read output in device memory! (-5)"}));

TEST(OpenCLKernel, CombinesTheStatusesOfBothBufferArgumentsByBitwiseOr) {
    const auto kernel = makeKernel();
    fakeOpenCL.calls.clear();
    fakeOpenCL.statuses["clSetKernelArg"] = {{1, -38}, {2, -49}};
    // ...11011010 | ...11001111 = ...11011111
    EXPECT_EQ(messageOfExecuting(*kernel, true), "Failed to set input and output kernel arguments! (-33)");
}

TEST(OpenCLKernel, ReadsNothingFromADeviceOnWhichTheKernelFailed) {
    const auto kernel = makeKernel();
    fakeOpenCL.statuses["clFinish"][0] = CL_OUT_OF_RESOURCES;
    messageOfExecuting(*kernel, true);
    EXPECT_TRUE(fakeOpenCL.callsOf("clEnqueueReadBuffer").empty());
}

TEST(OpenCLKernel, RefusesAWorkGroupOfNoItems) {
    const auto kernel = makeKernel();
    fakeOpenCL.kernelWorkGroupSize = 0;
    EXPECT_EQ(messageOfExecuting(*kernel, true), "Failed to retrieve kernel work group info! (-54)");
}

TEST(OpenCLKernel, TellsTheStatusOfAFailingArgumentSetter) {
    Kernel kernel("source", "name", [](cl_kernel) { return -50; });
    EXPECT_EQ(messageOfExecuting(kernel, true), "Failed to set kernel specific arguments! (-50)");
}

TEST(OpenCLKernel, ReleasesItsBuffersWhenTheArgumentSetterThrows) {
    Kernel kernel("source", "name", [](cl_kernel) -> int { throw std::runtime_error("thrown"); });
    const int liveObjects = fakeOpenCL.liveObjects;
    EXPECT_THROW(kernel.execute(output, bufferSize), std::runtime_error);
    EXPECT_EQ(fakeOpenCL.liveObjects, liveObjects);
}

TEST(OpenCLKernelDeathTest, StopsOnANullInput) {
    const auto kernel = makeKernel();
    EXPECT_DEATH(kernel->execute(nullptr, output, bufferSize),
                 "^Core/src/Renderer/OpenCL/OpenCLKernelImpl.cpp:[0-9]+: Assertion failed: inputBuffer\n$");
}

TEST(OpenCLKernelDeathTest, StopsOnANullOutput) {
    const auto kernel = makeKernel();
    EXPECT_DEATH(kernel->execute(input, nullptr, bufferSize), "Assertion failed: outputBuffer\n$");
    EXPECT_DEATH(kernel->execute(nullptr, bufferSize), "Assertion failed: outputBuffer\n$");
}

TEST(OpenCLKernelDeathTest, StopsOnASizeOfZero) {
    const auto kernel = makeKernel();
    EXPECT_DEATH(kernel->execute(input, output, 0), "Assertion failed: bufferSize\n$");
    EXPECT_DEATH(kernel->execute(output, 0), "Assertion failed: bufferSize\n$");
}
