#pragma once

namespace Renderer {

/// The OpenCL C program of FrameKernel.cl and ShadingKernel.cl, which document its two kernels.
extern const char* const shadingKernelSource;

constexpr const char* shadingImageKernelName = "shading";
constexpr const char* shadingMapKernelName = "shadingMap";

} // namespace Renderer
