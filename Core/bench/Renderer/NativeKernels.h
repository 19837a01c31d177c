#pragma once

#include "Renderer/DistortionParameter.h"
#include "Renderer/ShadingParameter.h"

/// The image kernels' arithmetic as plain, vectorised C++ on two threads: how fast this machine can be expected to be.
class NativeKernels {
public:
    static void distortion(const Renderer::DistortionParameter& parameter, const float* input, float* output);

    /// For gamma 1 only.
    static void shading(const Renderer::ShadingParameter& parameter, const float* input, float* output);
};
