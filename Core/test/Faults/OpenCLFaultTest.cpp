// Every OpenCL call of the renderers fails once: the facade says so with the text of that step, nothing is left behind,
// and the next frame on the same objects is right.

#include "Faults/OpenCLFaultLayer.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "Faults/FaultyFacade.h"
#include "Support/ChildProcess.h"
#include "Support/OpenCLDevice.h"

using Support::FaultyFacade;
using Support::Image;
using Support::inChildProcess;

namespace {

constexpr int c_status = -5;

/// One run of a kernel.
struct Execution {
    bool isShading;
    bool isMap;
};

/// The kernels that a render with these wishes runs, in order.
std::vector<Execution> executionsOf(const Support::HostFrame& host) {
    std::vector<Execution> executions;
    if (host.shading) executions.push_back({true, host.shading->renderMap});
    if (host.distortion) executions.push_back({false, host.distortion->renderMap});
    return executions;
}

int bufferCount(const Execution& execution) { return execution.isMap ? 1 : 2; }

/// Two sizes twice, radius, seven coefficients; shading: direction and gamma; the distortion map: an unused direction.
int specificArgumentCount(const Execution& execution) { return execution.isShading ? 14 : execution.isMap ? 13 : 12; }

int callCount(const std::string& function, const Execution& execution) {
    if (function == "clCreateBuffer") return bufferCount(execution);
    if (function == "clSetKernelArg") return bufferCount(execution) + specificArgumentCount(execution);
    if (function == "clEnqueueWriteBuffer") return execution.isMap ? 0 : 1;
    return 1;
}

std::string reason(const std::string& function, int number, const Execution& execution) {
    const std::string status = " (" + std::to_string(c_status) + ")";
    if (function == "clCreateBuffer") return "Failed to allocate device memory! (34816 bytes)";
    if (function == "clEnqueueWriteBuffer") return "Failed to write to input in device memory!" + status;
    if (function == "clGetKernelWorkGroupInfo") return "Failed to retrieve kernel work group info!" + status;
    if (function == "clEnqueueReadBuffer") return "Failed to read output in device memory!" + status;
    if (function != "clSetKernelArg") return "Failed to execute kernel!" + status;
    if (number <= bufferCount(execution)) {
        return execution.isMap ? "Failed to set output kernel argument!" + status
                               : "Failed to set input and output kernel arguments!" + status;
    }
    return number < callCount(function, execution) ? "Failed to execute kernel! (-52)"
                                                   : "Failed to set kernel specific arguments!" + status;
}

/// What is shown when the number-th call of a function fails while kernels run.
std::string textOfExecution(const std::string& function, int number, const std::vector<Execution>& executions) {
    for (const Execution& execution : executions) {
        const int calls = callCount(function, execution);
        if (number <= calls) {
            return std::string("An issue did occur during execution of the ") +
                   (execution.isShading ? "shading" : "distortion") +
                   " correction renderer.\nReason: " + reason(function, number, execution) +
                   "\nData Size: 34816 bytes\n";
        }
        number -= calls;
    }
    return "there is no such call";
}

/// What is shown when the number-th call of a function fails while the renderers are made. Empty: not called then.
std::string textOfStartUp(const std::string& function, int number) {
    const std::string end = " (" + std::to_string(c_status) + ")\n";
    if (function == "clGetPlatformIDs") {
        return std::string(number % 2 == 1 ? "Failed to query number of all available platforms!"
                                           : "Failed to query all available platform identifiers!") +
               end;
    }
    if (function == "clGetDeviceIDs" || function == "clGetDeviceInfo") return "No devices were found!\n";
    if (function == "clCreateContext") return "Failed to create context!" + end;
    if (function == "clCreateCommandQueue") return "Failed to create command queue!" + end;
    if (function == "clCreateProgramWithSource") return "Failed to create program!" + end;
    if (function == "clBuildProgram") return "Failed to build program executable! (-5) ()\n";
    if (function == "clCreateKernel") return "Failed to create kernel!" + end;
    return "";
}

/// Everything that the four kernels need lives on; buffers do not.
std::string leftBehind() {
    std::string text;
    for (const char* kind :
         {"clCreateContext", "clCreateCommandQueue", "clCreateProgramWithSource", "clCreateKernel"}) {
        if (openCLFaultAlive(kind) != 4)
            text += std::string(kind) + ": " + std::to_string(openCLFaultAlive(kind)) + " ";
    }
    if (openCLFaultAlive("clCreateBuffer") != 0) text += "buffers";
    return text;
}

/// Empty when the failure is told as expected.
std::string wrongTexts(const FaultyFacade& facade, const std::string& expected) {
    if (facade.detailed() != expected) return "told: " + facade.detailed() + "instead of: " + expected;
    if (facade.brief() != expected.substr(0, expected.find('\n'))) return "brief: " + facade.brief();
    return "";
}

class OpenCLFaultTest : public testing::Test {
protected:
    void SetUp() override {
        setenv("OPENCL_LAYERS", ORVEX_FAULT_LAYER, 1);
        // One driver alone: with several, a call that fails for one of them would not be missed.
        setenv("OCL_ICD_VENDORS", "/etc/OpenCL/vendors/pocl.icd", 0);
        // Asked in another process: a process that has used OpenCL cannot be forked.
        if (inChildProcess([] { return openCLDeviceExists() ? "device" : ""; }) != "device") {
            GTEST_SKIP() << "no OpenCL device here";
        }
    }
};

class OpenCLCall : public OpenCLFaultTest, public testing::WithParamInterface<const char*> {};
class OpenCLCallOfEveryFrame : public OpenCLCall {};

} // namespace

/// From the first call of the process on, which makes the renderers.
TEST_P(OpenCLCall, FailsOnceInTheFirstFrame) {
#ifdef ORVEX_THREAD_SANITIZED
    GTEST_SKIP() << "many slow processes of one thread each, where this sanitizer finds nothing";
#endif
    const std::string function = GetParam();
    const auto givenBoth = [](FaultyFacade& facade) {
        facade.host.shading.emplace();
        facade.host.distortion.emplace();
    };
    const std::string reference = inChildProcess([&] {
        FaultyFacade facade;
        givenBoth(facade);
        if (!facade.render()) return facade.detailed();
        return std::string(reinterpret_cast<const char*>(facade.output.data()), Support::bytes(facade.output));
    });
    ASSERT_EQ(reference.size(), 34816u) << reference;

    int number = 1;
    for (;; ++number) {
        const std::string result = inChildProcess([&]() -> std::string {
            FaultyFacade facade;
            givenBoth(facade);
            openCLFaultArm(function.c_str(), number, c_status);
            const bool isRendered = facade.render();
            if (openCLFaultCount() == 0) return isRendered ? "no fault" : facade.detailed();
            if (isRendered) return "rendered in spite of the fault";
            std::string expected = textOfStartUp(function, number);
            if (expected.empty()) expected = textOfExecution(function, number, executionsOf(facade.host));
            if (const std::string wrong = wrongTexts(facade, expected); !wrong.empty()) return wrong;
            if (!facade.render()) return "the next frame: " + facade.detailed();
            if (std::memcmp(facade.output.data(), reference.data(), reference.size()) != 0) return "wrong pixels";
            if (const std::string left = leftBehind(); !left.empty()) return "left behind: " + left;
            return "as expected";
        });
        if (result == "no fault") break;
        ASSERT_EQ(result, "as expected") << "call " << number;
    }
    std::printf("%s: %d calls failed\n", GetParam(), number - 1);
    EXPECT_GT(number, 1) << "the function is not called at all";
}

/// Of a frame that differs from the one before, so that nothing of that one may be shown.
TEST_P(OpenCLCallOfEveryFrame, FailsOnceInALaterFrame) {
    const std::string function = GetParam();
    const std::string result = inChildProcess([&]() -> std::string {
        for (int kind = 0; kind < 3; ++kind) {
            FaultyFacade facade;
            if (kind < 2) facade.host.shading = Core::ShadingCorrectionParameter{false, kind == 1};
            facade.host.distortion = Core::DistortionCorrectionParameter{false, kind == 2};
            const auto render = [&](float overscan) {
                facade.host.frameData->overscan = overscan;
                return facade.render();
            };
            if (!render(10.0f)) return facade.detailed();
            const Image expected = facade.output;
            int calls = 0;
            for (const Execution& execution : executionsOf(facade.host)) calls += callCount(function, execution);
            for (int number = 1; number <= calls; ++number) {
                const std::string call = "kind " + std::to_string(kind) + ", call " + std::to_string(number) + ": ";
                if (!render(0.0f)) return call + facade.detailed();
                openCLFaultArm(function.c_str(), number, c_status);
                if (render(10.0f)) return call + "rendered in spite of the fault";
                const std::string wrong =
                    wrongTexts(facade, textOfExecution(function, number, executionsOf(facade.host)));
                if (!wrong.empty()) return call + wrong;
                if (!render(10.0f)) return call + "the next frame: " + facade.detailed();
                if (facade.output != expected) return call + "wrong pixels";
            }
            openCLFaultArm(function.c_str(), calls + 1, c_status);
            if (!render(10.0f)) return "more calls than are known";
            openCLFaultArm(function.c_str(), 0, 0);
        }
        if (const std::string left = leftBehind(); !left.empty()) return "left behind: " + left;
        return "as expected";
    });
    EXPECT_EQ(result, "as expected");
}

std::string nameOfCall(const testing::TestParamInfo<const char*>& call) { return call.param; }

INSTANTIATE_TEST_SUITE_P(StartUp, OpenCLCall,
                         testing::Values("clGetPlatformIDs", "clGetDeviceIDs", "clGetDeviceInfo", "clCreateContext",
                                         "clCreateCommandQueue", "clCreateProgramWithSource", "clBuildProgram",
                                         "clCreateKernel"),
                         nameOfCall);

const auto callsOfEveryFrame =
    testing::Values("clCreateBuffer", "clEnqueueWriteBuffer", "clSetKernelArg", "clGetKernelWorkGroupInfo",
                    "clEnqueueNDRangeKernel", "clFinish", "clEnqueueReadBuffer");
INSTANTIATE_TEST_SUITE_P(Frame, OpenCLCall, callsOfEveryFrame, nameOfCall);
INSTANTIATE_TEST_SUITE_P(Frame, OpenCLCallOfEveryFrame, callsOfEveryFrame, nameOfCall);

TEST_F(OpenCLFaultTest, ABuildLogThatCannotBeFetchedLeavesTheStatusOfTheBuild) {
    EXPECT_EQ(inChildProcess([] {
                  FaultyFacade facade;
                  facade.host.shading.emplace();
                  openCLFaultArm("clBuildProgram", 1, -11);
                  openCLFaultArm("clGetProgramBuildInfo", 1, -30);
                  facade.render();
                  return facade.detailed() + std::to_string(openCLFaultCount()) + " faults";
              }),
              "Failed to build program executable! (-11) ()\n2 faults");
}

TEST_F(OpenCLFaultTest, AReleaseThatFailsHarmsNoFrame) {
    EXPECT_EQ(inChildProcess([]() -> std::string {
                  FaultyFacade facade;
                  facade.host.shading.emplace();
                  openCLFaultArm("clReleaseMemObject", 1, c_status);
                  if (!facade.render() || openCLFaultCount() != 1) return facade.detailed();
                  return facade.render() ? "as expected" : facade.detailed();
              }),
              "as expected");
}

TEST_F(OpenCLFaultTest, NothingIsAskedOfOpenCLBeforeAFrameIsToBeCorrected) {
    EXPECT_EQ(inChildProcess([]() -> std::string {
                  openCLFaultArm("clGetPlatformIDs", 1, c_status); // the first call of all
                  FaultyFacade facade;
                  RecordingFormatDatabase::RecordingFormat format;
                  unsigned int width = FaultyFacade::width, height = FaultyFacade::height;
                  if (!facade.core.recordingFormat(format)) return facade.detailed();
                  if (!facade.core.frameSize(width, height) || !facade.render()) return facade.detailed();
                  if (openCLFaultCount() != 0) return "asked by a frame that stays as it is";
                  facade.host.shading.emplace();
                  if (facade.render() || openCLFaultCount() != 1) return "not asked by the first corrected frame";
                  return "as expected";
              }),
              "as expected");
}
