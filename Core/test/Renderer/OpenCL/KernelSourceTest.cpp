#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <string>

#include "Renderer/OpenCL/DistortionKernel.h"
#include "Renderer/OpenCL/ShadingKernel.h"

namespace {

std::string contents(const std::string& file) {
    std::ifstream stream(std::string(ORVEX_SOURCE_DIR) + "/Core/src/Renderer/OpenCL/" + file, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(stream), {});
}

} // namespace

TEST(DistortionKernelSource, IsTheCommonFileAndItsOwnByteForByte) {
    EXPECT_EQ(Renderer::distortionKernelSource, contents("FrameKernel.cl") + contents("DistortionKernel.cl"));
}

TEST(ShadingKernelSource, IsTheCommonFileAndItsOwnByteForByte) {
    EXPECT_EQ(Renderer::shadingKernelSource, contents("FrameKernel.cl") + contents("ShadingKernel.cl"));
}
