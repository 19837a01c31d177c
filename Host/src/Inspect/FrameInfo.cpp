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

// What the node is told for the whole box that it renders.
Renderer::DistortionParameter boxed(const Renderer::DistortionParameter& parameter, PixelSize undistorted,
                                    const RecordedFrame& recorded) {
    const PixelSize box = recorded.box(
        {std::max(undistorted.width, parameter.currentWidth), std::max(undistorted.height, parameter.currentHeight)});
    Renderer::DistortionParameter result = parameter;
    result.currentWidth = box.width;
    result.currentHeight = box.height;
    return result;
}

FrameInfo::Undistortion undistortionOf(const Renderer::DistortionParameter& parameter,
                                       const Core::FrameToCorrect& frame, const RecordedFrame& recorded) {
    FrameInfo::Undistortion undistortion;
    PixelSize& size = undistortion.size;
    Renderer::DistortionRenderer::frameSize(parameter, size.width, size.height);
    undistortion.overscan = static_cast<float>(
        100.0 *
        (halfDiagonal(size.width, size.height) / halfDiagonal(parameter.currentWidth, parameter.currentHeight) - 1.0));
    undistortion.deviation =
        nodeDeviation(boxed(parameter, size, recorded), recorded.millimetresPerPixel(frame.recordingFormat));
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

FrameInfo frameInfo(std::int64_t frame, Core::FramePreparation& preparation, const RecordedFrame& recorded) {
    FrameInfo info;
    info.frame = frame;
    try {
        info.prepared = preparation.retrieveFrameToCorrect();
        if (!info.prepared) return info;
        info.parameters = preparation.parameters(*info.prepared);
        if (info.parameters.distortion)
            info.undistortion = undistortionOf(*info.parameters.distortion, *info.prepared, recorded);
    } catch (const Exception& exception) {
        info.error = exception.what();
        info.details = detailsOf(exception);
    } catch (const std::exception& exception) {
        info.error = exception.what();
    }
    return info;
}

} // namespace Host
