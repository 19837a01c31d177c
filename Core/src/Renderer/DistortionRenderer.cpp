#include "Renderer/DistortionRenderer.h"

#include <algorithm>
#include <cmath>
#include <exception>
#include <string>

#include "Exception/Assert.h"
#include "Exception/Exception.h"
#include "Renderer/NotRenderedException.h"
#include "Renderer/OpenCL/DistortionKernel.h"
#include "Renderer/OpenCL/KernelArguments.h"
#include "Text/ToString.h"

namespace Renderer {
namespace {

constexpr float maximumLength = 2147483648.0f; // px; nothing larger is a frame, and it fits an unsigned int

/// Turns lengths in px into whole numbers; throws if a length is not a valid frame size.
class FrameLength {
public:
    explicit FrameLength(float frameImageRadius) : m_frameImageRadius(frameImageRadius) {}

    unsigned int ceiled(float length) const {
        const float whole = std::ceil(length);
        // Written so that a length that is not a number fails too.
        if (!(whole >= 0.0f && whole < maximumLength)) fail();
        return static_cast<unsigned int>(whole);
    }

    [[noreturn]] void fail() const {
        throw Exception(
            "It is not possible to correctly calculate the new frame size with an image"
            " radius of " +
            Text::toString(m_frameImageRadius) + " mm.");
    }

private:
    float m_frameImageRadius;
};

void checkRadii(const DistortionParameter& parameter) {
    if (parameter.imageRadius > 0.0f && parameter.frameImageRadius > 0.0f) return;
    throw Exception("Image radii of " + Text::toString(parameter.imageRadius) + " mm" + " and " +
                    Text::toString(parameter.frameImageRadius) + " mm" +
                    " are invalid and need to be greater than zero.");
}

} // namespace

DistortionRenderer::DistortionRenderer() : m_imageKernel(makeKernel(false)), m_mapKernel(makeKernel(true)) {}

OpenCLKernel<float> DistortionRenderer::makeKernel(bool isMapKernel) {
    return OpenCLKernel<float>(
        distortionKernelSource, isMapKernel ? distortionMapKernelName : distortionImageKernelName,
        [this, isMapKernel](cl_kernel kernel) { return setKernelArguments(kernel, isMapKernel); });
}

int DistortionRenderer::setKernelArguments(cl_kernel kernel, bool isMapKernel) const {
    checkParameterAndThrowExceptionIfNeeded();
    KernelArguments arguments(kernel, isMapKernel ? 1 : 2);
    const DistortionParameter& p = parameter;
    for (const std::uint32_t length : {p.currentWidth, p.currentHeight, p.originalWidth, p.originalHeight})
        arguments.set(length);
    for (const float value : {p.imageRadius, p.a0, p.a1, p.a2, p.a3, p.a4, p.a5, p.a6}) arguments.set(value);
    // The map kernel declares it without reading it; some runtimes refuse a launch with an argument left unset.
    if (isMapKernel) arguments.set(cl_uchar{0});
    return arguments.statusOfLast();
}

void DistortionRenderer::checkParameterAndThrowExceptionIfNeeded() const { checkRadii(parameter); }

void DistortionRenderer::frameSize(unsigned int& width, unsigned int& height) { frameSize(parameter, width, height); }

void DistortionRenderer::frameSize(const DistortionParameter& parameter, unsigned int& width, unsigned int& height) {
    checkRadii(parameter);

    const float currentWidth = static_cast<float>(parameter.currentWidth);
    const float currentHeight = static_cast<float>(parameter.currentHeight);
    const float centerX = currentWidth * 0.5f - 0.5f;
    const float centerY = currentHeight * 0.5f - 0.5f;
    const float deltaX = (currentWidth - 1.0f) - centerX;
    const float deltaY = (currentHeight - 1.0f) - centerY;
    const float diagonal = std::sqrt(deltaX * deltaX + deltaY * deltaY);

    // What sticks out most is a corner or the middle of an edge.
    const float radius = parameter.frameImageRadius;
    const float cornerFactor = distortionFactorForDistance(radius, parameter);
    const float rightFactor = distortionFactorForDistance(deltaX * radius / diagonal, parameter);
    const float bottomFactor = distortionFactorForDistance(deltaY * radius / diagonal, parameter);
    const FrameLength frameLength(radius);
    if (cornerFactor < 0.0f || rightFactor < 0.0f || bottomFactor < 0.0f) frameLength.fail();

    const unsigned int grownWidth = std::max(frameLength.ceiled(rightFactor * (currentWidth - 1.0f)),
                                             frameLength.ceiled(cornerFactor * (currentWidth - 1.0f))) +
                                    1;
    const unsigned int grownHeight = std::max(frameLength.ceiled(bottomFactor * (currentHeight - 1.0f)),
                                              frameLength.ceiled(cornerFactor * (currentHeight - 1.0f))) +
                                     1;

    const float aspect = static_cast<float>(parameter.originalWidth) / static_cast<float>(parameter.originalHeight);
    const unsigned int aspectWidth = frameLength.ceiled(static_cast<float>(grownHeight) * aspect);
    const unsigned int aspectHeight = frameLength.ceiled(static_cast<float>(grownWidth) / aspect);
    width = std::max(grownWidth, aspectWidth);
    height = std::max(grownHeight, aspectHeight);
}

void DistortionRenderer::render(const float* inputBuffer, float* outputBuffer, unsigned long bufferSize) {
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
            "An issue did occur during execution of the distortion correction renderer.",
            "Reason: " + std::string(exception.what()) + "\nData Size: " + std::to_string(bufferSize) + " bytes");
    }
}

float distortionFactorForDistance(float distance, const DistortionParameter& parameter) {
    // Written so that a distance that is not a number gives 1 too.
    if (!(distance > 0.0f)) return 1.0f;
    const float d = distance;
    const DistortionParameter& p = parameter;
    return (p.b0 + p.b1 * d + p.b2 * d * d + p.b3 * d * d * d + p.b4 * d * d * d * d + p.b5 * d * d * d * d * d +
            p.b6 * d * d * d * d * d * d) /
           d;
}

} // namespace Renderer
