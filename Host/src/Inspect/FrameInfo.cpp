#include "Inspect/FrameInfo.h"

#include <algorithm>
#include <cmath>
#include <exception>

#include "Exception/Exception.h"
#include "Map/RadialSampling.h"
#include "Renderer/DistortionRenderer.h"

namespace Host {

namespace {

// Half the distance between opposite corner pixels' centres, as the overscan is defined.
double halfDiagonal(double width, double height) { return std::hypot(width - 1.0, height - 1.0) / 2.0; }

FrameInfo::Undistortion undistortionOf(const Renderer::DistortionParameter& parameter) {
    FrameInfo::Undistortion undistortion;
    Renderer::DistortionRenderer::frameSize(parameter, undistortion.size.width, undistortion.size.height);
    undistortion.overscan =
        static_cast<float>(100.0 * (halfDiagonal(undistortion.size.width, undistortion.size.height) /
                                        halfDiagonal(parameter.currentWidth, parameter.currentHeight) -
                                    1.0));
    undistortion.deviation = undistortionDeviation(parameter);
    undistortion.imageRadius = parameter.frameImageRadius;
    undistortion.correctedRadius = parameter.imageRadius;
    return undistortion;
}

// The part of a detailed description behind its first line, which is the brief text.
std::string detailsOf(const Exception& exception) {
    const std::string description = exception.detailedDescription();
    return description.substr(description.find('\n') + 1);
}

} // namespace

FrameInfo frameInfo(std::int64_t frame, Core::FramePreparation& preparation) {
    FrameInfo info;
    info.frame = frame;
    try {
        info.prepared = preparation.retrieveFrameToCorrect();
        if (!info.prepared) return info;
        info.parameters = preparation.parameters(*info.prepared);
        if (info.parameters.distortion) info.undistortion = undistortionOf(*info.parameters.distortion);
    } catch (const Exception& exception) {
        info.error = exception.what();
        info.details = detailsOf(exception);
    } catch (const std::exception& exception) {
        info.error = exception.what();
    }
    return info;
}

double undistortionDeviation(const Renderer::DistortionParameter& parameter) {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    Renderer::DistortionRenderer::frameSize(parameter, width, height);
    // The kernels measure to the corners' outer edges.
    const double recorded = std::hypot(parameter.currentWidth, parameter.currentHeight) / 2.0;
    Renderer::DistortionParameter whole = parameter;
    whole.currentWidth = std::max(width, parameter.currentWidth);
    whole.currentHeight = std::max(height, parameter.currentHeight);
    const RadialSampling rendered = RadialSampling::rendered(whole);
    const RadialSampling ideal = rendered.at(static_cast<double>(parameter.frameImageRadius) / recorded);
    return rendered.largestDeviation(ideal, std::hypot(whole.currentWidth, whole.currentHeight) / 2.0);
}

} // namespace Host
