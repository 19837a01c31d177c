#pragma once

#include <cstddef>

#include "Renderer/DistortionParameter.h"
#include "Renderer/ShadingParameter.h"

/// The frame that everybody renders, and the room for results; both hold width × height × 4 floats.
struct ComparedFrame {
    int width = 0;
    int height = 0;
    unsigned int threads = 1;
    Renderer::DistortionParameter distortion;
    Renderer::ShadingParameter shading;
    const float* input = nullptr;
    float* output = nullptr;

    std::size_t bytes() const { return static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 16; }
};
