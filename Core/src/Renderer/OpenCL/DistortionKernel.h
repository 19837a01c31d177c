#pragma once

namespace Renderer {

/// The OpenCL C program of FrameKernel.cl and DistortionKernel.cl, which document its two kernels.
extern const char* const distortionKernelSource;

constexpr const char* distortionImageKernelName = "distortion";
constexpr const char* distortionMapKernelName = "distortionMap";

} // namespace Renderer
