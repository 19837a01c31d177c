// What the facade makes of machines whose OpenCL installation is not as it should be.

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "Faults/FaultyFacade.h"
#include "Support/ChildProcess.h"
#include "Support/TemporaryFolder.h"

using Support::FaultyFacade;
using Support::inChildProcess;

namespace {

std::string textOfRendering() {
    FaultyFacade facade;
    facade.host.distortion.emplace();
    return facade.render() ? "rendered" : facade.detailed();
}

} // namespace

TEST(OpenCLEnvironment, WithoutAnyDriverTellsTheLoadersStatus) {
    const Support::TemporaryFolder folder;
    EXPECT_EQ(inChildProcess([&] {
                  setenv("OCL_ICD_VENDORS", folder.path().c_str(), 1);
                  return textOfRendering();
              }),
              "Failed to query number of all available platforms! (-1001)\n");
}

TEST(OpenCLEnvironment, WithABrokenDriverTellsTheLoadersStatus) {
    const Support::TemporaryFolder folder;
    folder.write("broken.icd", folder.path("no-such-driver.so") + "\n");
    EXPECT_EQ(inChildProcess([&] {
                  setenv("OCL_ICD_VENDORS", folder.path().c_str(), 1);
                  return textOfRendering();
              }),
              "Failed to query number of all available platforms! (-1001)\n");
}

TEST(OpenCLEnvironment, WithoutAPlaceForTheKernelCacheTellsThatNoDeviceIsUsable) {
    if (inChildProcess(textOfRendering) != "rendered") GTEST_SKIP() << "no OpenCL device here";
    const Support::TemporaryFolder folder;
    folder.write("file", "");
    EXPECT_EQ(inChildProcess([&] {
                  setenv("POCL_CACHE_DIR", folder.path("file/cache").c_str(), 1);
                  return textOfRendering();
              }),
              "No devices were found!\n");
}

TEST(OpenCLEnvironment, AFrameTooLargeForTheDeviceFailsAndASmallOneIsRenderedAfterIt) {
    const std::string result = inChildProcess([]() -> std::string {
        setenv("POCL_MEMORY_LIMIT", "1", 1); // GiB, of which one buffer may have a part
        FaultyFacade facade;
        facade.host.distortion = Core::DistortionCorrectionParameter{false, true};
        if (!facade.render()) return facade.detailed();
        facade.host.frameData = Support::frameOf(16384, 8640);
        // Never touched when the buffer is refused, so it takes no memory here either.
        const std::size_t size = std::size_t{16384} * 8640 * 16;
        void* const pixels = std::calloc(size, 1);
        const bool isRendered = facade.core.render(nullptr, static_cast<float*>(pixels), size);
        std::free(pixels);
        const std::string text = facade.detailed();
        if (isRendered) return "rendered";
        facade.host.frameData = Support::frameOf(FaultyFacade::width, FaultyFacade::height);
        return facade.render() ? text : facade.detailed();
    });
    if (result == "No devices were found!\n") GTEST_SKIP() << "no OpenCL device here";
    EXPECT_EQ(result,
              "An issue did occur during execution of the distortion correction renderer.\n"
              "Reason: Failed to allocate device memory! (2264924160 bytes)\nData Size: 2264924160 bytes\n");
}
