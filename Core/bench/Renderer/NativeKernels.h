#pragma once

#include "Renderer/DistortionParameter.h"
#include "Renderer/ShadingParameter.h"

/// The image kernels' arithmetic as plain, vectorised C++: how fast this machine can be expected to be.
///
/// Frames hold currentWidth × currentHeight × 4 floats; the rows are shared out among `threads` threads.
class NativeKernels {
public:
    static void distortion(const Renderer::DistortionParameter& parameter, const float* input, float* output,
                           unsigned int threads = 2);

    /// For gamma 1 only.
    static void shading(const Renderer::ShadingParameter& parameter, const float* input, float* output,
                        unsigned int threads = 2);

    /// The places, in px, that the distortion samples: one value per pixel in each array, limited to -2 … length.
    static void positions(const Renderer::DistortionParameter& parameter, float* xs, float* ys,
                          unsigned int threads = 2);

    /// Samples one row of `width` pixels at positions x, y, x, y, … limited as above; other values are undefined.
    static void sampleRow(const float* input, int width, int height, const float* positions, float* row);
};
