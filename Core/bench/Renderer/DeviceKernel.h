#pragma once

#include <cstddef>

#include "Renderer/DistortionParameter.h"
#include "Renderer/OpenCL/CLCommandQueue.h"
#include "Renderer/OpenCL/CLContext.h"
#include "Renderer/OpenCL/CLKernel.h"
#include "Renderer/OpenCL/CLMemory.h"
#include "Renderer/OpenCL/CLProgram.h"
#include "Renderer/ShadingParameter.h"

/// An image kernel alone, on buffers that are already on the most powerful device, and the transfers alone.
///
/// Every operation returns when the device is done and throws Exception with the OpenCL status when it fails.
class DeviceKernel {
public:
    /// Items launched: one per byte as the renderers do, or one per pixel.
    enum class Launch { perByte, perPixel };

    /// Puts the frame of currentWidth × currentHeight × 4 floats on the device.
    DeviceKernel(const Renderer::DistortionParameter& parameter, const float* frame);
    DeviceKernel(const Renderer::ShadingParameter& parameter, const float* frame);

    void run(Launch launch);
    void write(const float* frame);
    void read(float* frame);

private:
    template <typename Parameter>
    DeviceKernel(const char* source, const char* name, const Parameter& parameter, const float* frame);
    template <typename Parameter>
    void setSharedArguments(const Parameter& parameter);

    cl_device_id m_device;
    std::size_t m_size; ///< of the frame, bytes
    Renderer::CLContext m_context;
    Renderer::CLCommandQueue m_queue;
    Renderer::CLProgram m_program;
    Renderer::CLKernel m_kernel;
    Renderer::CLMemory m_input;
    Renderer::CLMemory m_output;
    std::size_t m_localSize = 0;
};
