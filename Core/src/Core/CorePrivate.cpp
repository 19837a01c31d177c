#include "Core/CorePrivate.h"

#include <cstdint>
#include <cstdlib>
#include <new>
#include <utility>

#include "Exception/DetailLines.h"
#include "Exception/Exception.h"
#include "Renderer/DistortionRenderer.h"
#include "Renderer/ShadingRenderer.h"

namespace Core {

namespace {

// The process-wide objects are made on first use and never destroyed: a host thread may still render while static
// objects are torn down.

struct SharedRenderers {
    std::mutex rendererAccessLock;
    std::unique_ptr<Renderer::ShadingRenderer> shading;
    std::unique_ptr<Renderer::DistortionRenderer> distortion;
};

SharedRenderers& sharedRenderers() {
    static auto* const renderers = new SharedRenderers;
    return *renderers;
}

/// A zero-filled image between the two corrections; calloc leaves it untouched until it is written.
class IntermediateImage {
public:
    explicit IntermediateImage(unsigned long size)
        : m_pixels(static_cast<float*>(std::calloc(size / sizeof(float), sizeof(float)))) {
        if (!m_pixels) throw std::bad_alloc();
    }
    ~IntermediateImage() { std::free(m_pixels); }
    IntermediateImage(const IntermediateImage&) = delete;
    IntermediateImage& operator=(const IntermediateImage&) = delete;

    float* pixels() const { return m_pixels; }

private:
    float* m_pixels;
};

} // namespace

Core::CorePrivate::CorePrivate(std::unique_ptr<CoreDataSource> dataSource) : FramePreparation(std::move(dataSource)) {}

Core::CorePrivate::~CorePrivate() = default;

void Core::CorePrivate::frameSize(unsigned int& width, unsigned int& height) {
    const FrameParameters wanted = prepareRendererIfNeeded();
    if (wanted.shading && wanted.distortion) {
        throw Exception("It is not possible to calculate the frame size for both shading and distortion correction.");
    }
    if (!wanted.shading && !wanted.distortion) return;

    SharedRenderers& renderers = sharedRenderers();
    const std::lock_guard<std::mutex> lock(renderers.rendererAccessLock);
    if (wanted.shading) {
        renderers.shading->parameter = *wanted.shading;
        renderers.shading->frameSize(width, height);
    } else {
        renderers.distortion->parameter = *wanted.distortion;
        renderers.distortion->frameSize(width, height);
    }
}

void Core::CorePrivate::render(const float* input, float* output, unsigned long size,
                               const std::function<bool()>& isAborted) {
    const FrameParameters wanted = prepareRendererIfNeeded();
    if (!wanted.shading && !wanted.distortion) return;

    const bool isShadingMap = wanted.shading && wanted.shading->renderMap;
    const bool isDistortionMap = wanted.distortion && wanted.distortion->renderMap;
    const auto throwNoSingleMap = [] {
        throw Exception("It is not possible to generate a single map for both shading and distortion correction.");
    };
    if (isShadingMap && isDistortionMap) throwNoSingleMap();
    if ((isShadingMap || isDistortionMap) && input) {
        throw Exception("Input buffer is required to be set to nullptr whenever map rendering is requested.");
    }
    // A displacement map takes no image, so it cannot follow a shaded image either.
    if (wanted.shading && isDistortionMap) throwNoSingleMap();
    const auto sizeOf = [](const auto& parameter) {
        return static_cast<std::uint64_t>(parameter.currentWidth) * parameter.currentHeight;
    };
    const std::uint64_t pixels = wanted.shading ? sizeOf(*wanted.shading) : sizeOf(*wanted.distortion);
    if (size / (4 * sizeof(float)) < pixels) {
        throw Exception("Image buffer is smaller than the current frame.",
                        DetailLines().number("Data Size", std::to_string(size) + " bytes").string());
    }

    std::optional<IntermediateImage> intermediate;
    if (wanted.shading && wanted.distortion) intermediate.emplace(size);
    SharedRenderers& renderers = sharedRenderers();
    const std::lock_guard<std::mutex> lock(renderers.rendererAccessLock);
    if (isAborted && isAborted()) return;
    if (wanted.shading) {
        renderers.shading->parameter = *wanted.shading;
        renderers.shading->render(input, intermediate ? intermediate->pixels() : output, size);
    }
    if (wanted.distortion) {
        renderers.distortion->parameter = *wanted.distortion;
        renderers.distortion->render(intermediate ? intermediate->pixels() : input, output, size);
    }
}

FrameParameters Core::CorePrivate::prepareRendererIfNeeded() {
    const std::optional<FrameToCorrect> frame = retrieveFrameToCorrect();
    if (!frame) return {};
    {
        SharedRenderers& renderers = sharedRenderers();
        const std::lock_guard<std::mutex> lock(renderers.rendererAccessLock);
        // Made one after the other, so that one that failed (no device) is tried again by the next call.
        if (!renderers.shading) renderers.shading = std::make_unique<Renderer::ShadingRenderer>();
        if (!renderers.distortion) renderers.distortion = std::make_unique<Renderer::DistortionRenderer>();
    }
    return parameters(*frame);
}

} // namespace Core
