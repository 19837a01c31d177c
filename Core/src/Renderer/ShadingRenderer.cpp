#include "Renderer/ShadingRenderer.h"

#include <exception>
#include <string>

#include "Exception/Assert.h"
#include "Renderer/NotRenderedException.h"
#include "Renderer/OpenCL/ShadingKernel.h"

namespace Renderer {

ShadingRenderer::ShadingRenderer() : m_imageKernel(makeKernel(false)), m_mapKernel(makeKernel(true)) {}

OpenCLKernel<float> ShadingRenderer::makeKernel(bool isMapKernel) {
    return OpenCLKernel<float>(
        shadingKernelSource, isMapKernel ? shadingMapKernelName : shadingImageKernelName,
        [this, isMapKernel](cl_kernel kernel) { return setKernelArguments(kernel, isMapKernel); });
}

int ShadingRenderer::setKernelArguments(cl_kernel kernel, bool isMapKernel) const {
    cl_uint index = isMapKernel ? 1 : 2;
    for (const std::uint32_t* length :
         {&parameter.currentWidth, &parameter.currentHeight, &parameter.originalWidth, &parameter.originalHeight})
        clSetKernelArg(kernel, index++, sizeof(*length), length);
    for (const float* value : {&parameter.imageRadius, &parameter.a0, &parameter.a1, &parameter.a2, &parameter.a3,
                               &parameter.a4, &parameter.a5, &parameter.a6})
        clSetKernelArg(kernel, index++, sizeof(*value), value);
    clSetKernelArg(kernel, index++, sizeof(parameter.reverse), &parameter.reverse);
    // An argument that could not be set makes the launch fail, so the last status is enough.
    return clSetKernelArg(kernel, index, sizeof(parameter.gamma), &parameter.gamma);
}

void ShadingRenderer::frameSize(unsigned int& width, unsigned int& height) {
    width = parameter.currentWidth;
    height = parameter.currentHeight;
}

void ShadingRenderer::render(const float* inputBuffer, float* outputBuffer, unsigned long bufferSize) {
    try {
        if (parameter.renderMap) {
            ORVEX_ASSERT(!inputBuffer);
            m_mapKernel.execute(outputBuffer, bufferSize);
        } else {
            ORVEX_ASSERT(inputBuffer);
            m_imageKernel.execute(inputBuffer, outputBuffer, bufferSize);
        }
    } catch (const std::exception& exception) {
        throw NotRenderedException(
            "An issue did occur during execution of the shading correction renderer.",
            "Reason: " + std::string(exception.what()) + "\nData Size: " + std::to_string(bufferSize) + " bytes");
    }
}

} // namespace Renderer
