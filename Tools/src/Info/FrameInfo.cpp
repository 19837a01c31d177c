#include "Info/FrameInfo.h"

#include <cmath>
#include <exception>

#include "Chain/RadialSampling.h"
#include "Exception/Exception.h"
#include "Lens/RecordedFrame.h"
#include "Report/Failure.h"

namespace Tools {

namespace {

// Half the distance between opposite corner pixels' centres, as the overscan is defined.
double halfDiagonal(const DD::Image::Box& box) { return std::hypot(box.w() - 1.0, box.h() - 1.0) / 2.0; }

FrameInfo::Undistortion undistortionOf(const FramePlan& plan, const PictureShape& shape,
                                       const Renderer::DistortionParameter& parameter) {
    FrameInfo::Undistortion undistortion;
    undistortion.size = {static_cast<std::uint32_t>(plan.kept.w()), static_cast<std::uint32_t>(plan.kept.h())};
    const double before = halfDiagonal(shape.whole()), after = halfDiagonal(plan.keptOf(shape.whole(), shape));
    undistortion.overscan = static_cast<float>(100.0 * (after / before - 1.0));
    undistortion.deviation =
        nodeDeviation(plan.distortion.value(),
                      RecordedFrame(shape.format, shape.overscan).millimetresPerPixel(plan.frame.recordingFormat));
    undistortion.imageRadius = parameter.frameImageRadius;
    undistortion.correctedRadius = parameter.imageRadius;
    return undistortion;
}

// Those of both corrections: a frame whose shading cannot be corrected is told about too.
Core::FrameParameters bothParameters(const Core::FramePreparation& preparation, Core::FrameToCorrect frame) {
    frame.wantedShading = Core::ShadingCorrectionParameter();
    return preparation.parameters(frame);
}

// The part of a detailed description behind its first line, which is the brief text.
std::string detailsOf(const Exception& exception) {
    const std::string description = exception.detailedDescription();
    return description.substr(description.find('\n') + 1);
}

} // namespace

FrameInfo frameInfo(std::int64_t frame, Core::FramePreparation& preparation, const PictureShape& shape) {
    FrameInfo info;
    info.frame = frame;
    try {
        info.prepared = preparation.retrieveFrameToCorrect();
        info.parameters = bothParameters(preparation, *info.prepared);
        const FramePlan plan = planFrame(shape, Steps::Distortion, preparation);
        info.prepared = plan.frame;
        info.parameters = bothParameters(preparation, plan.frame);
        info.undistortion = undistortionOf(plan, shape, info.parameters.distortion.value());
    } catch (const Exception& exception) {
        info.error = causeFirst(exception.what());
        info.details = detailsOf(exception);
    } catch (const std::exception& exception) {
        info.error = causeFirst(exception.what());
    }
    return info;
}

} // namespace Tools
