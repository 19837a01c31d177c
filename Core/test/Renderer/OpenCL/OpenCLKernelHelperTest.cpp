#include "Renderer/OpenCL/OpenCLKernelHelper.h"

#include <gtest/gtest.h>

#include <functional>

#include "Exception/Exception.h"
#include "Support/EnvironmentVariable.h"
#include "Support/FakeOpenCL.h"

namespace {

using Renderer::OpenCLKernelHelper;
using Device = FakeOpenCL::Device;
using Platform = FakeOpenCL::Platform;

std::string messageOf(const std::function<void()>& operation) {
    try {
        operation();
    } catch (const Exception& exception) {
        return exception.what();
    }
    return "no exception";
}

std::string messageOfChoice() {
    return messageOf([] { OpenCLKernelHelper::idOfMostPowerfulDevice(); });
}

cl_device_id choiceAmong(const std::vector<Device>& devices) {
    fakeOpenCL.platforms = {Platform{.devices = devices}};
    return OpenCLKernelHelper::idOfMostPowerfulDevice();
}

} // namespace

TEST(DeviceChoice, TakesAGpuBeforeAProcessorOfHigherScore) {
    EXPECT_EQ(choiceAmong({Device{.computeUnits = 64, .clockFrequency = 4000, .workGroupSize = 4096},
                           Device{.type = CL_DEVICE_TYPE_GPU}}),
              FakeOpenCL::deviceId(0, 1));
}

TEST(DeviceChoice, TakesTheGpuWithTheLargerProductOfUnitsGroupSizeAndClock) {
    EXPECT_EQ(choiceAmong(
                  {Device{.type = CL_DEVICE_TYPE_GPU, .computeUnits = 10, .clockFrequency = 10, .workGroupSize = 10},
                   Device{.type = CL_DEVICE_TYPE_GPU, .computeUnits = 2, .clockFrequency = 2, .workGroupSize = 1000}}),
              FakeOpenCL::deviceId(0, 1));
}

TEST(DeviceChoice, MultipliesTheScoreInSixtyFourBits) {
    // 2^16 * 2^16 * 1 is 0 in 32 bits.
    EXPECT_EQ(choiceAmong({Device{.computeUnits = 5}, Device{.computeUnits = 65536, .clockFrequency = 65536}}),
              FakeOpenCL::deviceId(0, 1));
}

TEST(DeviceChoice, DoesNotCountAGpuThatIsSomethingElseTooAsAGpu) {
    EXPECT_EQ(choiceAmong({Device{.type = CL_DEVICE_TYPE_GPU | CL_DEVICE_TYPE_DEFAULT}, Device{.computeUnits = 2}}),
              FakeOpenCL::deviceId(0, 1));
}

TEST(DeviceChoice, KeepsTheOrderOfDiscoveryAmongEquals) {
    EXPECT_EQ(choiceAmong(std::vector<Device>(40)), FakeOpenCL::deviceId(0, 0));
}

TEST(DeviceChoice, LooksAtTheDevicesOfAllPlatforms) {
    fakeOpenCL.platforms = {Platform(), Platform{.devices = {Device(), Device{.type = CL_DEVICE_TYPE_GPU}}}};
    EXPECT_EQ(OpenCLKernelHelper::idOfMostPowerfulDevice(), FakeOpenCL::deviceId(1, 1));
}

TEST(DeviceChoice, SkipsAPlatformWhoseDevicesCannotBeListed) {
    fakeOpenCL.platforms = {
        Platform{.devices = {Device{.type = CL_DEVICE_TYPE_GPU}}, .statusOfDeviceCount = CL_DEVICE_NOT_FOUND},
        Platform{.devices = {Device{.type = CL_DEVICE_TYPE_GPU}}, .statusOfDeviceIds = CL_OUT_OF_HOST_MEMORY},
        Platform()};
    EXPECT_EQ(OpenCLKernelHelper::idOfMostPowerfulDevice(), FakeOpenCL::deviceId(2, 0));
}

TEST(DeviceChoice, SaysThatThereIsNoDeviceWhenEveryPlatformFails) {
    fakeOpenCL.platforms = {Platform{.statusOfDeviceCount = CL_DEVICE_NOT_FOUND},
                            Platform{.statusOfDeviceCount = CL_DEVICE_NOT_FOUND}};
    EXPECT_EQ(messageOfChoice(), "No devices were found!");
}

TEST(DeviceChoice, SaysThatThereIsNoDeviceWhenThereIsNoPlatform) {
    fakeOpenCL.platforms = {};
    EXPECT_EQ(messageOfChoice(), "No devices were found!");
}

TEST(DeviceChoice, PassesOnThatPlatformsCannotBeListed) {
    fakeOpenCL.statuses["clGetPlatformIDs"][1] = -1001;
    EXPECT_EQ(messageOfChoice(), "Failed to query number of all available platforms! (-1001)");
}

TEST(DeviceChoice, TakesTheDeviceThatTheUserNamesByAPartOfItsNameInAnyCase) {
    const EnvironmentVariable variable("ORVEX_OPENCL_DEVICE", "PIPE");
    EXPECT_EQ(choiceAmong({Device{.name = "Card", .type = CL_DEVICE_TYPE_GPU}, Device{.name = "llvmpipe (LLVM 15)"}}),
              FakeOpenCL::deviceId(0, 1));
}

TEST(DeviceChoice, TakesADeviceOfThePlatformThatTheUserNames) {
    const EnvironmentVariable variable("ORVEX_OPENCL_DEVICE", "rusticl");
    fakeOpenCL.platforms = {Platform{.devices = {Device{.type = CL_DEVICE_TYPE_GPU}}}, Platform{.name = "rusticl"}};
    EXPECT_EQ(OpenCLKernelHelper::idOfMostPowerfulDevice(), FakeOpenCL::deviceId(1, 0));
}

TEST(DeviceChoice, TakesTheMostPowerfulOfTheDevicesThatTheUserNames) {
    const EnvironmentVariable variable("ORVEX_OPENCL_DEVICE", "card");
    EXPECT_EQ(
        choiceAmong({Device{.computeUnits = 9}, Device{.name = "Card 1"}, Device{.name = "Card 2", .computeUnits = 2}}),
        FakeOpenCL::deviceId(0, 2));
}

TEST(DeviceChoice, TakesNoOtherDeviceThanTheOneThatTheUserNames) {
    const EnvironmentVariable variable("ORVEX_OPENCL_DEVICE", "Card 3");
    EXPECT_EQ(messageOfChoice(), "No device has \"Card 3\" in its name! (ORVEX_OPENCL_DEVICE)");
}

TEST(DeviceChoice, IsTheProgramsOwnWhereTheUsersNameIsEmpty) {
    const EnvironmentVariable variable("ORVEX_OPENCL_DEVICE", "");
    EXPECT_EQ(choiceAmong({Device(), Device{.type = CL_DEVICE_TYPE_GPU}}), FakeOpenCL::deviceId(0, 1));
}

TEST(DeviceChoice, DoesNotDependOnThePlatformsName) {
    fakeOpenCL.statuses["clGetPlatformInfo"][0] = -30;
    EXPECT_EQ(OpenCLKernelHelper::idOfMostPowerfulDevice(), FakeOpenCL::deviceId(0, 0));
}

TEST(DeviceChoice, AsksAfreshEveryTime) {
    EXPECT_EQ(choiceAmong({Device()}), FakeOpenCL::deviceId(0, 0));
    EXPECT_EQ(choiceAmong({Device(), Device{.type = CL_DEVICE_TYPE_GPU}}), FakeOpenCL::deviceId(0, 1));
}

TEST(DeviceChoice, AsksForNameTypeVendorUnitsClockAndGroupSizeInThisOrder) {
    choiceAmong({Device()});
    // A text takes two calls: its length, then the text.
    const std::vector<std::string> expected = {
        "clGetDeviceInfo(4139)", "clGetDeviceInfo(4139)", "clGetDeviceInfo(4096)", "clGetDeviceInfo(4140)",
        "clGetDeviceInfo(4140)", "clGetDeviceInfo(4098)", "clGetDeviceInfo(4108)", "clGetDeviceInfo(4100)"};
    EXPECT_EQ(fakeOpenCL.callsOf("clGetDeviceInfo"), expected);
}

class DeviceChoiceWithAFailingQuery : public testing::TestWithParam<cl_device_info> {};

TEST_P(DeviceChoiceWithAFailingQuery, SkipsThatDeviceOnly) {
    EXPECT_EQ(
        choiceAmong({Device{.type = CL_DEVICE_TYPE_GPU, .failingInfos = {{GetParam(), CL_INVALID_DEVICE}}}, Device()}),
        FakeOpenCL::deviceId(0, 1));
}

INSTANTIATE_TEST_SUITE_P(Queries, DeviceChoiceWithAFailingQuery,
                         testing::Values(CL_DEVICE_NAME, CL_DEVICE_TYPE, CL_DEVICE_VENDOR, CL_DEVICE_MAX_COMPUTE_UNITS,
                                         CL_DEVICE_MAX_CLOCK_FREQUENCY, CL_DEVICE_MAX_WORK_GROUP_SIZE));

TEST(OpenCLKernelHelper, AnswersAnEmptyListWithoutASecondCallWhenThereIsNoPlatform) {
    fakeOpenCL.platforms = {};
    EXPECT_TRUE(OpenCLKernelHelper::allPlatformIds().empty());
    EXPECT_EQ(fakeOpenCL.callsOf("clGetPlatformIDs").size(), 1u);
}

TEST(OpenCLKernelHelper, ListsDevicesOfAllTypes) {
    fakeOpenCL.platforms = {Platform{.devices = {Device(), Device()}}};
    const std::vector<cl_device_id> expected = {FakeOpenCL::deviceId(0, 0), FakeOpenCL::deviceId(0, 1)};
    EXPECT_EQ(OpenCLKernelHelper::allDeviceIdsForPlatform(FakeOpenCL::platformId(0)), expected);
    EXPECT_EQ(fakeOpenCL.callsOf("clGetDeviceIDs"), (std::vector<std::string>(2, "clGetDeviceIDs(all)")));
}

TEST(OpenCLKernelHelper, CutsTextsAtTheirFirstZeroByte) {
    fakeOpenCL.platforms[0].name = std::string("Name\0rest", 9);
    EXPECT_EQ(OpenCLKernelHelper::queryPlatformInfo(FakeOpenCL::platformId(0), CL_PLATFORM_NAME), "Name");
}

TEST(OpenCLKernelHelper, AnswersAnEmptyTextForALengthOfZero) {
    fakeOpenCL.platforms[0].name = "";
    fakeOpenCL.platforms[0].devices[0].name = "";
    EXPECT_EQ(OpenCLKernelHelper::queryPlatformInfo(FakeOpenCL::platformId(0), CL_PLATFORM_NAME), "");
    EXPECT_EQ(OpenCLKernelHelper::queryDeviceInfo(FakeOpenCL::deviceId(0, 0), CL_DEVICE_NAME), "");
    EXPECT_EQ(fakeOpenCL.calls.size(), 2u);
}

TEST(OpenCLKernelHelper, ReadsNumbersOfEveryWidth) {
    fakeOpenCL.platforms[0].devices[0] =
        Device{.type = CL_DEVICE_TYPE_GPU, .computeUnits = 7, .workGroupSize = 5000000000};
    const cl_device_id device = FakeOpenCL::deviceId(0, 0);
    EXPECT_EQ(OpenCLKernelHelper::queryDeviceInfo<std::uint32_t>(device, CL_DEVICE_MAX_COMPUTE_UNITS), 7u);
    EXPECT_EQ(OpenCLKernelHelper::queryDeviceInfo<std::uint64_t>(device, CL_DEVICE_TYPE), CL_DEVICE_TYPE_GPU);
    EXPECT_EQ(OpenCLKernelHelper::queryDeviceInfo<std::size_t>(device, CL_DEVICE_MAX_WORK_GROUP_SIZE), 5000000000u);
}

struct FailingQuery {
    const char* function;
    int number;
    std::function<void()> operation;
    const char* message;
};

class OpenCLKernelHelperFailure : public testing::TestWithParam<FailingQuery> {};

TEST_P(OpenCLKernelHelperFailure, IsToldWithTheStatus) {
    fakeOpenCL.statuses[GetParam().function][GetParam().number] = -30;
    EXPECT_EQ(messageOf(GetParam().operation), GetParam().message);
}

INSTANTIATE_TEST_SUITE_P(
    Queries, OpenCLKernelHelperFailure,
    testing::Values(
        FailingQuery{"clGetPlatformIDs", 1, [] { OpenCLKernelHelper::allPlatformIds(); },
                     "Failed to query number of all available platforms! (-30)"},
        FailingQuery{"clGetPlatformIDs", 2, [] { OpenCLKernelHelper::allPlatformIds(); },
                     "Failed to query all available platform identifiers! (-30)"},
        FailingQuery{"clGetDeviceIDs", 1,
                     [] { OpenCLKernelHelper::allDeviceIdsForPlatform(FakeOpenCL::platformId(0)); },
                     "Failed to query number of all available devices per platform! (-30)"},
        FailingQuery{"clGetDeviceIDs", 2,
                     [] { OpenCLKernelHelper::allDeviceIdsForPlatform(FakeOpenCL::platformId(0)); },
                     "Failed to query all available device identifiers per platform! (-30)"},
        FailingQuery{"clGetPlatformInfo", 1,
                     [] { OpenCLKernelHelper::queryPlatformInfo(FakeOpenCL::platformId(0), CL_PLATFORM_NAME); },
                     "Failed to query length of platform info with id 2306! (-30)"},
        FailingQuery{"clGetPlatformInfo", 2,
                     [] { OpenCLKernelHelper::queryPlatformInfo(FakeOpenCL::platformId(0), CL_PLATFORM_NAME); },
                     "Failed to query platform info with id 2306! (-30)"},
        FailingQuery{"clGetDeviceInfo", 1,
                     [] { OpenCLKernelHelper::queryDeviceInfo(FakeOpenCL::deviceId(0, 0), CL_DEVICE_NAME); },
                     "Failed to query length of device info with id 4139! (-30)"},
        FailingQuery{"clGetDeviceInfo", 2,
                     [] { OpenCLKernelHelper::queryDeviceInfo(FakeOpenCL::deviceId(0, 0), CL_DEVICE_NAME); },
                     "Failed to query device info with id 4139! (-30)"},
        FailingQuery{"clGetDeviceInfo", 1,
                     [] {
                         OpenCLKernelHelper::queryDeviceInfo<std::uint32_t>(FakeOpenCL::deviceId(0, 0),
                                                                            CL_DEVICE_MAX_COMPUTE_UNITS);
                     },
                     "Failed to query device info with id 4098! (-30)"}));
