#pragma once

#include <CL/cl.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "Core/Core.h"
#include "Core/FakeCoreDataSource.h"

namespace Support {

using Image = std::vector<float>; ///< RGBA, row by row

/// Of the values 0 to 1, the same for the same seed.
inline Image noise(std::uint32_t width, std::uint32_t height, std::uint32_t seed) {
    Image image(std::size_t{width} * height * 4);
    std::uint32_t state = seed * 2654435761u + 1;
    for (float& value : image) {
        state = state * 1664525u + 1013904223u;
        value = static_cast<float>(state >> 8) / 16777216.0f;
    }
    return image;
}

inline unsigned long bytes(const Image& image) { return image.size() * sizeof(float); }

inline std::string briefErrorOf(const Core::Core& core) {
    char text[4096];
    return core.briefErrorDescription(text, sizeof(text)) ? text : "no error";
}

inline std::string detailedErrorOf(const Core::Core& core) {
    char text[16384];
    return core.detailedErrorDescription(text, sizeof(text)) ? text : "no error";
}

/// Of tests that render: skipped where there is no OpenCL device.
class RenderTest : public testing::Test {
protected:
    void SetUp() override {
        cl_uint platforms = 0;
        if (clGetPlatformIDs(0, nullptr, &platforms) != CL_SUCCESS || platforms == 0) {
            GTEST_SKIP() << "no OpenCL device here";
        }
    }
};

} // namespace Support
