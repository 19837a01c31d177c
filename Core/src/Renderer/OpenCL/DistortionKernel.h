#pragma once

namespace Renderer {

/// The OpenCL C program of DistortionKernel.cl, which documents its two kernels.
extern const char* const distortionKernelSource;

constexpr const char* distortionImageKernelName = "distortion";
constexpr const char* distortionMapKernelName = "distortionMap";

} // namespace Renderer
