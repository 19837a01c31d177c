#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <limits>
#include <ostream>
#include <string>
#include <vector>

#include "Renderer/OpenCL/CLCommandQueue.h"
#include "Renderer/OpenCL/CLContext.h"
#include "Renderer/OpenCL/CLKernel.h"
#include "Renderer/OpenCL/CLMemory.h"
#include "Renderer/OpenCL/CLProgram.h"
#include "Renderer/OpenCL/DistortionKernel.h"
#include "Renderer/OpenCL/OpenCLKernel.h"
#include "Renderer/OpenCL/OpenCLKernelHelper.h"
#include "Renderer/OpenCL/ShadingKernel.h"
#include "Support/OpenCLDevice.h"
#include "Support/TestFrame.h"

// The product's kernels are shaped for speed; those in PlainKernels are told step by step. Both give the same bits.
namespace {

struct Size {
    std::uint32_t width, height;
};

void PrintTo(const Size& size, std::ostream* stream) { *stream << size.width << "x" << size.height; }

struct Arguments {
    const char* name;
    float a[7];
    float imageRadius = 15.0f;
    cl_uchar reverse = 0;
    float gamma = 1.0f;
};

constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();

const std::vector<Arguments>& distortions() {
    static const std::vector<Arguments> arguments = {{"usual", {0, 1.0f, 0.002f, -0.0007f, 2e-5f, 1e-7f, 1e-9f}},
                                                     {"borders in the picture", {0, 1.1f}},
                                                     {"enlarged", {0, 0.93f, 0, 1e-4f}},
                                                     {"identity", {0, 1}},
                                                     {"mirrored", {0, -1}},
                                                     {"not through zero", {3}},
                                                     {"not a number", {0, 1, 0, notANumber}},
                                                     {"infinite", {0, 1, infinity}},
                                                     {"huge", {0, 1, 0, 1e30f}},
                                                     {"infinite radius", {0, 1}, infinity}};
    return arguments;
}

const std::vector<Arguments>& shadings() {
    static const std::vector<Arguments> arguments = {
        {"removed", {100, -0.5f, -0.1f, 0.001f, 1e-5f, 1e-7f, 1e-9f}},
        {"added", {100, -0.5f, -0.1f, 0.001f, 1e-5f, 1e-7f, 1e-9f}, 15.0f, 1},
        {"removed under a gamma", {100, -0.5f, -0.1f, 0.001f}, 15.0f, 0, 2.2f},
        {"added under a gamma", {100, -0.5f, -0.1f, 0.001f}, 15.0f, 1, 0.45f},
        {"no illumination", {0}},
        {"negative illumination", {-100}},
        {"not a number", {100, notANumber}},
        {"infinite", {100, 0, infinity}},
        {"no radius", {100, -1}, 0.0f}};
    return arguments;
}

struct Program {
    std::string kernelName;
    std::string source;
    std::string plainSource;
    bool isShading;
    bool isMap;

    const std::vector<Arguments>& allArguments() const { return isShading ? shadings() : distortions(); }
};

std::string plainSource(const std::string& file) {
    std::ifstream stream(std::string(ORVEX_SOURCE_DIR) + "/Core/test/Renderer/PlainKernels/" + file);
    return std::string(std::istreambuf_iterator<char>(stream), {});
}

Program program(const std::string& name) {
    using namespace Renderer;
    const std::string distortion = plainSource("DistortionKernel.cl");
    const std::string shading = plainSource("ShadingKernel.cl");
    if (name == distortionImageKernelName)
        return {distortionImageKernelName, distortionKernelSource, distortion, false, false};
    if (name == distortionMapKernelName)
        return {distortionMapKernelName, distortionKernelSource, distortion, false, true};
    if (name == shadingImageKernelName) return {shadingImageKernelName, shadingKernelSource, shading, true, false};
    return {shadingMapKernelName, shadingKernelSource, shading, true, true};
}

int setSpecificArguments(cl_kernel kernel, const Program& program, const Size& size, const Arguments& arguments) {
    cl_uint index = program.isMap ? 1 : 2;
    int status = CL_SUCCESS;
    // The original's size, larger in one direction and smaller in the other, must not matter.
    for (const cl_uint length : {size.width, size.height, size.width * 2, size.height / 2})
        status |= clSetKernelArg(kernel, index++, sizeof(length), &length);
    status |= clSetKernelArg(kernel, index++, sizeof(float), &arguments.imageRadius);
    for (const float coefficient : arguments.a)
        status |= clSetKernelArg(kernel, index++, sizeof(coefficient), &coefficient);
    if (program.isShading || program.isMap)
        status |= clSetKernelArg(kernel, index++, sizeof(cl_uchar), &arguments.reverse);
    if (program.isShading) status |= clSetKernelArg(kernel, index++, sizeof(float), &arguments.gamma);
    return status;
}

class Kernel {
public:
    Kernel(const Program& program, const std::string& source)
        : m_program(program), m_kernel(source, program.kernelName, [this](cl_kernel kernel) {
              return setSpecificArguments(kernel, m_program, m_size, m_arguments);
          }) {}

    std::vector<float> render(const Size& size, const Arguments& arguments, const std::vector<float>& input) {
        m_size = size;
        m_arguments = arguments;
        std::vector<float> output(input.size(), -7.0f);
        if (m_program.isMap)
            m_kernel.execute(output.data(), output.size() * sizeof(float));
        else
            m_kernel.execute(input.data(), output.data(), output.size() * sizeof(float));
        return output;
    }

private:
    const Program& m_program;
    Size m_size = {};
    Arguments m_arguments = {};
    Renderer::OpenCLKernel<float> m_kernel;
};

// A launch of that many items, rounded up to whole groups; OpenCLKernel's is always one of sixteen per pixel.
std::vector<float> launched(const Program& program, const Size& size, const Arguments& arguments,
                            const std::vector<float>& input, std::size_t items) {
    using namespace Renderer;
    const cl_device_id device = OpenCLKernelHelper::idOfMostPowerfulDevice();
    const CLContext context(device);
    const CLCommandQueue queue(device, context);
    const CLProgram code(device, context, program.source);
    const CLKernel kernel(code, program.kernelName);
    const std::size_t bytes = input.size() * sizeof(float);
    const CLMemory from(context, CL_MEM_READ_ONLY, bytes);
    const CLMemory to(context, CL_MEM_WRITE_ONLY, bytes);
    std::vector<float> output(input.size(), -7.0f);
    cl_uint index = 0;
    int status = setSpecificArguments(kernel, program, size, arguments);
    for (const cl_mem memory : {static_cast<cl_mem>(from), static_cast<cl_mem>(to)})
        if (memory == to || !program.isMap) status |= clSetKernelArg(kernel, index++, sizeof(memory), &memory);
    status |= clEnqueueWriteBuffer(queue, from, CL_TRUE, 0, bytes, input.data(), 0, nullptr, nullptr);
    status |= clEnqueueWriteBuffer(queue, to, CL_TRUE, 0, bytes, output.data(), 0, nullptr, nullptr);
    std::size_t local = 1;
    status |= clGetKernelWorkGroupInfo(kernel, device, CL_KERNEL_WORK_GROUP_SIZE, sizeof(local), &local, nullptr);
    const std::size_t global = (items + local - 1) / local * local;
    status |= clEnqueueNDRangeKernel(queue, kernel, 1, nullptr, &global, &local, 0, nullptr, nullptr);
    status |= clEnqueueReadBuffer(queue, to, CL_TRUE, 0, bytes, output.data(), 0, nullptr, nullptr);
    EXPECT_EQ(status, CL_SUCCESS);
    return output;
}

// The same bits; two not-a-numbers count as the same whatever their bits.
bool isSame(float left, float right) {
    return std::memcmp(&left, &right, sizeof(left)) == 0 || (std::isnan(left) && std::isnan(right));
}

struct Tolerance {
    float absolute = 0.0f;
    float relative = 0.0f;

    bool accepts(float expected, float actual) const {
        return std::fabs(expected - actual) <= absolute + relative * std::fabs(expected);
    }
};

// Number of differing values, and the first of them.
std::string differences(const std::vector<float>& expected, const std::vector<float>& actual,
                        const Tolerance& tolerance = {}) {
    std::size_t count = 0, first = 0;
    for (std::size_t i = 0; i < expected.size(); i++) {
        if (isSame(expected[i], actual[i]) || tolerance.accepts(expected[i], actual[i])) continue;
        if (count++ == 0) first = i;
    }
    if (count == 0) return "none";
    return std::to_string(count) + ", the first at value " + std::to_string(first) + ": " +
           std::to_string(expected[first]) + " became " + std::to_string(actual[first]);
}

class OnPocl : public OnOpenCLDevice {
protected:
    void SetUp() override {
        OnOpenCLDevice::SetUp();
        if (!IsSkipped() && !openCLDeviceIsPocl()) GTEST_SKIP() << "the device's roundings are not known";
    }
};

class KernelOnPocl : public OnPocl, public testing::WithParamInterface<std::tuple<std::string, Size>> {};

class WholeFrameOnPocl : public OnPocl, public testing::WithParamInterface<std::string> {};

} // namespace

TEST_P(KernelOnPocl, GivesTheSameBitsAsThePlainKernel) {
    const Program tested = program(std::get<0>(GetParam()));
    const Size size = std::get<1>(GetParam());
    Kernel kernel(tested, tested.source);
    Kernel plain(tested, tested.plainSource);
    const std::vector<float> input = TestFrame::noiseWithSpecialValues(size.width, size.height);
    for (const Arguments& arguments : tested.allArguments())
        EXPECT_EQ(differences(plain.render(size, arguments, input), kernel.render(size, arguments, input)), "none")
            << arguments.name;
}

INSTANTIATE_TEST_SUITE_P(Sizes, KernelOnPocl,
                         testing::Combine(testing::Values("distortion", "distortionMap", "shading", "shadingMap"),
                                          testing::Values(Size{1, 1}, Size{1, 7}, Size{7, 1}, Size{5, 3}, Size{17, 3},
                                                          Size{63, 37}, Size{1, 9001}, Size{9001, 1}, Size{4096, 3},
                                                          Size{317, 241}, Size{4095, 33}, Size{4096, 61})));

TEST_P(WholeFrameOnPocl, GivesTheSameBitsAsThePlainKernel) {
    const Program tested = program(GetParam());
    const Size size = {1433, 807}; // odd, many groups; the plain kernels take about a second
    const std::vector<float> input = TestFrame::noise(size.width, size.height);
    const Arguments& arguments = tested.allArguments().front();
    EXPECT_EQ(differences(Kernel(tested, tested.plainSource).render(size, arguments, input),
                          Kernel(tested, tested.source).render(size, arguments, input)),
              "none");
}

TEST_P(WholeFrameOnPocl, GivesTheSameBitsAsThePlainKernelAtEveryKindOfWidthUpTo4096) {
    const Program tested = program(GetParam());
    Kernel kernel(tested, tested.source);
    Kernel plain(tested, tested.plainSource);
    const Arguments& arguments = tested.allArguments().front();
    // Odd numbers throughout, and those around the sizes of groups and vectors.
    std::vector<std::uint32_t> widths = {255, 256, 257, 1023, 1024, 1025, 2047, 2048, 2049, 4094, 4095, 4096};
    for (std::uint32_t width = 1; width < 4096; width += 106) widths.push_back(width);
    for (const std::uint32_t width : widths) {
        const Size size = {width, 5};
        const std::vector<float> input = TestFrame::noise(size.width, size.height);
        EXPECT_EQ(differences(plain.render(size, arguments, input), kernel.render(size, arguments, input)), "none")
            << width;
    }
}

TEST_P(WholeFrameOnPocl, GivesTheSameBitsHoweverManyItemsAreLaunched) {
    const Program tested = program(GetParam());
    const Size size = {317, 241}; // in groups of 4096: 18 and a part
    const std::size_t pixels = std::size_t{size.width} * size.height;
    const std::vector<float> input = TestFrame::noise(size.width, size.height);
    const Arguments& arguments = tested.allArguments().front();
    const std::vector<float> expected = Kernel(tested, tested.plainSource).render(size, arguments, input);
    for (const std::size_t items : {pixels, pixels + 1, pixels * 2, pixels * 15, pixels * 16 - 1, pixels * 16,
                                    pixels * 16 + 1, pixels * 17, pixels * 40})
        EXPECT_EQ(differences(expected, launched(tested, size, arguments, input, items)), "none") << items;
}

TEST_P(WholeFrameOnPocl, GivesTheSameBitsAsThePlainKernelAtFullSize) {
    // The plain kernels take 2 to 5 seconds for this frame on two cores; shorter tests cover its columns and its rows.
    if (!std::getenv("ORVEX_LONG_TESTS")) GTEST_SKIP() << "ORVEX_LONG_TESTS is not set";
    const Program tested = program(GetParam());
    const Size size = {4096, 2160};
    const std::vector<float> input = TestFrame::noiseWithSpecialValues(size.width, size.height);
    Kernel kernel(tested, tested.source);
    Kernel plain(tested, tested.plainSource);
    for (const Arguments& arguments : tested.allArguments())
        EXPECT_EQ(differences(plain.render(size, arguments, input), kernel.render(size, arguments, input)), "none")
            << arguments.name;
}

TEST_P(WholeFrameOnPocl, BeyondFourThousandPixelsWideGivesThePlainKernelsValues) {
    const Program tested = program(GetParam());
    Kernel kernel(tested, tested.source);
    Kernel plain(tested, tested.plainSource);
    // Squares no longer fit a float's 24 bits, so a power and a product may be rounded differently. A position beyond
    // 4096 then differs by 1 / 2048 px, and so does a picture of values from 0 to 1; a factor by a few roundings.
    const Tolerance tolerance = tested.isShading ? Tolerance{0.0f, 1e-6f} : Tolerance{5e-4f, 0.0f};
    for (const Size& size : {Size{8192, 40}, Size{8193, 9}, Size{5001, 9}}) {
        std::vector<float> input = TestFrame::noise(size.width, size.height);
        for (float& value : input) value = (value - 0.01f) / 4.0f;
        for (const Arguments& arguments : tested.allArguments())
            EXPECT_EQ(
                differences(plain.render(size, arguments, input), kernel.render(size, arguments, input), tolerance),
                "none")
                << arguments.name << ", " << testing::PrintToString(size);
    }
}

TEST_P(WholeFrameOnPocl, IsRightInGroupsOfMoreItemsThanLocalMemoryHolds) {
    const Program tested = program(GetParam());
    const std::string capacity = "_CAPACITY 4096";
    std::string source = tested.source;
    const std::size_t found = source.find(capacity);
    ASSERT_NE(found, std::string::npos);
    source.replace(found, capacity.size(), "_CAPACITY 100");
    const Size size = {317, 241};
    const std::vector<float> input = TestFrame::noiseWithSpecialValues(size.width, size.height);
    Kernel kernel(tested, tested.source);
    Kernel small(tested, source);
    for (const Arguments& arguments : tested.allArguments())
        EXPECT_EQ(differences(kernel.render(size, arguments, input), small.render(size, arguments, input)), "none")
            << arguments.name;
}

INSTANTIATE_TEST_SUITE_P(Kernels, WholeFrameOnPocl,
                         testing::Values("distortion", "distortionMap", "shading", "shadingMap"));
