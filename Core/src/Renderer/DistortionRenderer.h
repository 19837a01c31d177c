#pragma once

#include "Renderer/DistortionParameter.h"
#include "Renderer/OpenCL/OpenCLKernel.h"

namespace Renderer {

/// Removes or applies radial lens distortion on whole RGBA float frames, and sizes the corrected frame.
///
/// Sensor lengths are in mm, frame lengths in px. A pixel buffer holds currentWidth × currentHeight × 4 floats
/// (R, G, B, A), row by row from row 0 without gaps; buffer sizes are in bytes.
/// Threads: one caller at a time; the facade holds its renderer lock around every use of an object.
class DistortionRenderer {
public:
    /// Filled by the caller before each frame; read by frameSize and render.
    DistortionParameter parameter;

    /// Builds the image and the map kernel on the most powerful OpenCL device.
    /// Throws Exception with the failed OpenCL step and its status.
    DistortionRenderer();
    DistortionRenderer(const DistortionRenderer&) = delete;
    DistortionRenderer& operator=(const DistortionRenderer&) = delete;

    /// Throws Exception "Image radii of A mm and B mm are invalid and need to be greater than zero." unless both are.
    void checkParameterAndThrowExceptionIfNeeded() const;

    /// Sets the size in px of the frame that holds the corrected picture's corners and edge midpoints, extended to the
    /// original's aspect ratio. Example: 100 × 100 px of a 200 × 100 original, identity coefficients: 200 × 100. Throws
    /// Exception when a radius is not greater than 0, and when the polynomial b gives no usable size (a negative
    /// factor, or a size that is not finite or above 2³¹ px); then both values are untouched.
    void frameSize(unsigned int& width, unsigned int& height);

    /// The same for the given parameters; needs no OpenCL device. Any thread.
    static void frameSize(const DistortionParameter& parameter, unsigned int& width, unsigned int& height);

    /// Renders one frame; `inputBuffer` is null exactly when parameter.renderMap is set. Areas that the source does not
    /// cover fade to (0, 0, 0, 0). The map holds (x ÷ width, y ÷ height, 0, 1) whatever the coefficients.
    /// Throws NotRenderedException with the reason; then the output is undefined and the renderer stays usable.
    void render(const float* inputBuffer, float* outputBuffer, unsigned long bufferSize);

private:
    OpenCLKernel<float> makeKernel(bool isMapKernel);
    int setKernelArguments(cl_kernel kernel, bool isMapKernel) const;

    OpenCLKernel<float> m_imageKernel;
    OpenCLKernel<float> m_mapKernel;
};

/// Factor from a distance in the source, in mm, to that of the same point in the destination, by the coefficients b:
/// (b0 + b1·d + … + b6·d⁶) ÷ d; 1 unless the distance is greater than 0.
float distortionFactorForDistance(float distance, const DistortionParameter& parameter);

} // namespace Renderer
