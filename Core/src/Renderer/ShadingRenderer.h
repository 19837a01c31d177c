#pragma once

#include "Renderer/OpenCL/OpenCLKernel.h"
#include "Renderer/ShadingParameter.h"

namespace Renderer {

/// Removes or adds lens shading, the radial fall-off of brightness, on whole RGBA float frames.
///
/// Sensor lengths are in mm, frame lengths in px. A pixel buffer holds currentWidth × currentHeight × 4 floats
/// (R, G, B, A), row by row from row 0 without gaps; buffer sizes are in bytes.
/// Threads: one caller at a time; the facade holds its renderer lock around every use of an object.
class ShadingRenderer {
public:
    /// Filled by the caller before each frame; read by frameSize and render. Values are not checked: an illumination
    /// of 0 or a radius of 0 propagates to infinity or not-a-number.
    ShadingParameter parameter;

    /// Builds the image and the map kernel on the most powerful OpenCL device.
    /// Throws Exception with the failed OpenCL step and its status.
    ShadingRenderer();
    ShadingRenderer(const ShadingRenderer&) = delete;
    ShadingRenderer& operator=(const ShadingRenderer&) = delete;

    /// Sets the current size: shading never changes the size of a frame.
    void frameSize(unsigned int& width, unsigned int& height);

    /// Renders one frame; `inputBuffer` is null exactly when parameter.renderMap is set. Alpha keeps its value.
    /// The map holds (factor, factor, factor, 1), by which a linear image is multiplied.
    /// Throws NotRenderedException with the reason; then the output is undefined and the renderer stays usable.
    void render(const float* inputBuffer, float* outputBuffer, unsigned long bufferSize);

private:
    OpenCLKernel<float> makeKernel(bool isMapKernel);
    int setKernelArguments(cl_kernel kernel, bool isMapKernel) const;

    OpenCLKernel<float> m_imageKernel;
    OpenCLKernel<float> m_mapKernel;
};

} // namespace Renderer
