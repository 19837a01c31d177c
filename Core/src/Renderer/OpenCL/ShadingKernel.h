#pragma once

namespace Renderer {

/// The OpenCL C program of ShadingKernel.cl, which documents its two kernels.
extern const char* const shadingKernelSource;

constexpr const char* shadingImageKernelName = "shading";
constexpr const char* shadingMapKernelName = "shadingMap";

} // namespace Renderer
