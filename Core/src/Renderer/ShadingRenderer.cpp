#include "Renderer/ShadingRenderer.h"

#include <exception>
#include <string>

#include "Exception/Assert.h"
#include "Renderer/NotRenderedException.h"
#include "Renderer/OpenCL/KernelArguments.h"
#include "Renderer/OpenCL/ShadingKernel.h"

namespace Renderer {

ShadingRenderer::ShadingRenderer() : m_imageKernel(makeKernel(false)), m_mapKernel(makeKernel(true)) {}

OpenCLKernel<float> ShadingRenderer::makeKernel(bool isMapKernel) {
    return OpenCLKernel<float>(
        shadingKernelSource, isMapKernel ? shadingMapKernelName : shadingImageKernelName,
        [this, isMapKernel](cl_kernel kernel) { return setKernelArguments(kernel, isMapKernel); });
}

int ShadingRenderer::setKernelArguments(cl_kernel kernel, bool isMapKernel) const {
    KernelArguments arguments(kernel, isMapKernel ? 1 : 2);
    const ShadingParameter& p = parameter;
    for (const std::uint32_t length : {p.currentWidth, p.currentHeight, p.originalWidth, p.originalHeight})
        arguments.set(length);
    for (const float value : {p.imageRadius, p.a0, p.a1, p.a2, p.a3, p.a4, p.a5, p.a6}) arguments.set(value);
    arguments.set(p.reverse);
    arguments.set(p.gamma);
    return arguments.statusOfLast();
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
