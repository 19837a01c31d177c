#include <gmock/gmock.h>
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

    // The log that a text shows of a program whose compiler complains in a message of this length, and perhaps in a few
    // more words.
    static std::string logOfAComplaint(std::size_t length) {
        const std::string message = messageOfMaking("#error " + std::string(length, 'x') + "\n", "broken");
        const std::string start = "Failed to build program executable! (-11) (";
        EXPECT_EQ(message.substr(0, start.size()), start);
        EXPECT_EQ(message.back(), ')');
        return message.substr(start.size(), message.size() - start.size() - 1);
    }

    // The same for a log of this length; it must leave the driver's own words their room.
    static std::string logOfLength(std::size_t length) {
        constexpr std::size_t little = 10;
        const std::size_t ownWords = logOfAComplaint(little).size() - little;
        return logOfAComplaint(length - ownWords);
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

TEST_F(DeviceProgram, ShowsAComplaintOf10Bytes) {
    EXPECT_THAT(logOfAComplaint(10), testing::ContainsRegex("[^x]x{10}[^x]"));
}

TEST_F(DeviceProgram, ShowsALogOf4096BytesWhole) {
    const std::string log = logOfLength(4096);
    EXPECT_EQ(log.size(), 4096u);
    EXPECT_NE(log.find(std::string(1000, 'x')), std::string::npos) << log;
    EXPECT_NE(log.back(), 'x') << "the driver's own words follow the compiler's";
}

TEST_F(DeviceProgram, CutsALogOf20000BytesAfterItsFirst4096) {
    const std::string log = logOfLength(20000);
    EXPECT_EQ(log.size(), 4096u);
    EXPECT_EQ(log.substr(log.size() - 1000), std::string(1000, 'x'));
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
