#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Exception/Exception.h"
#include "Renderer/OpenCL/OpenCLKernel.h"
#include "Support/OpenCLDevice.h"

namespace {

class DeviceProgram : public OnOpenCLDevice {
protected:
    static std::string messageOfMaking(const std::string& source, const std::string& kernelName) {
        try {
            const Renderer::OpenCLKernel<float> kernel(source, kernelName, [](cl_kernel) { return CL_SUCCESS; });
        } catch (const Exception& exception) {
            return exception.what();
        }
        return "no exception";
    }
};

} // namespace

TEST_F(DeviceProgram, WithASyntaxErrorTellsTheCompilersLog) {
    const std::string message = messageOfMaking("kernel void broken(global float* a) { a[0] = ; }", "broken");
    const std::string start = "Failed to build program executable! (-11) (";
    EXPECT_EQ(message.substr(0, start.size()), start);
    EXPECT_NE(message.find("error"), std::string::npos) << message;
    EXPECT_LE(message.size(), start.size() + 4096 + 1);
}

TEST_F(DeviceProgram, WithoutTheNamedKernelTellsTheStatus) {
    EXPECT_EQ(messageOfMaking("kernel void other(global float* a) { a[0] = 1; }", "wanted"),
              "Failed to create kernel! (-46)");
}

TEST_F(DeviceProgram, WithAnUnsetArgumentIsRefusedByTheLaunch) {
    Renderer::OpenCLKernel<float> kernel("kernel void fill(global float* a, float value) { a[0] = value; }", "fill",
                                         [](cl_kernel) { return CL_SUCCESS; });
    std::vector<float> output(4);
    try {
        kernel.execute(output.data(), 16);
        FAIL() << "launched";
    } catch (const Exception& exception) {
        EXPECT_STREQ(exception.what(), "Failed to execute kernel! (-52)");
    }
}
