#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Exception/Exception.h"
#include "Renderer/OpenCL/CLContext.h"
#include "Renderer/OpenCL/CLKernel.h"
#include "Renderer/OpenCL/DistortionKernel.h"
#include "Renderer/OpenCL/OpenCLKernel.h"
#include "Renderer/OpenCL/OpenCLKernelHelper.h"
#include "Renderer/OpenCL/ShadingKernel.h"
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

// "global float* output, uint currentWidth, …" as the device's compiler understands the product's kernel.
std::string argumentsOf(const std::string& source, const std::string& kernelName) {
    const cl_device_id device = Renderer::OpenCLKernelHelper::idOfMostPowerfulDevice();
    const Renderer::CLContext context(device);
    const char* text = source.c_str();
    const cl_program program = clCreateProgramWithSource(context, 1, &text, nullptr, nullptr);
    EXPECT_EQ(clBuildProgram(program, 0, nullptr, "-cl-kernel-arg-info", nullptr, nullptr), CL_SUCCESS);
    std::string arguments;
    {
        const Renderer::CLKernel kernel(program, kernelName);
        cl_uint count = 0;
        clGetKernelInfo(kernel, CL_KERNEL_NUM_ARGS, sizeof(count), &count, nullptr);
        for (cl_uint index = 0; index < count; ++index) {
            cl_kernel_arg_address_qualifier space = 0;
            char type[64] = {};
            char name[64] = {};
            clGetKernelArgInfo(kernel, index, CL_KERNEL_ARG_ADDRESS_QUALIFIER, sizeof(space), &space, nullptr);
            clGetKernelArgInfo(kernel, index, CL_KERNEL_ARG_TYPE_NAME, sizeof(type), type, nullptr);
            clGetKernelArgInfo(kernel, index, CL_KERNEL_ARG_NAME, sizeof(name), name, nullptr);
            arguments += std::string(index == 0 ? "" : ", ") + (space == CL_KERNEL_ARG_ADDRESS_GLOBAL ? "global " : "");
            arguments += std::string(type) + " " + name;
        }
    }
    clReleaseProgram(program);
    return arguments;
}

const std::string sharedArguments =
    ", uint currentWidth, uint currentHeight, uint originalWidth, uint originalHeight, float imageRadius, "
    "float a0, float a1, float a2, float a3, float a4, float a5, float a6";

class DeviceKernels : public OnOpenCLDevice {};

} // namespace

TEST_F(DeviceKernels, OfImagesTakeTheirPixelsAsFloats) {
    EXPECT_EQ(argumentsOf(Renderer::distortionKernelSource, "distortion"),
              "global float* input, global float* output" + sharedArguments);
    EXPECT_EQ(argumentsOf(Renderer::shadingKernelSource, "shading"),
              "global float* input, global float* output" + sharedArguments + ", uchar reverse, float gamma");
}

TEST_F(DeviceKernels, OfMapsTakeTheirPixelsAsFloats) {
    EXPECT_EQ(argumentsOf(Renderer::distortionKernelSource, "distortionMap"),
              "global float* output" + sharedArguments + ", uchar reverse");
    EXPECT_EQ(argumentsOf(Renderer::shadingKernelSource, "shadingMap"),
              "global float* output" + sharedArguments + ", uchar reverse, float gamma");
}

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
