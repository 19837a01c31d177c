#include "Inspect/FrameInfo.h"

#include <algorithm>
#include <cmath>
#include <exception>

#include "Exception/Exception.h"
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

double undistortionDeviation(const Renderer::DistortionParameter& p) {
    constexpr int stepCount = 512;
    const auto factor = [&p](double distance) {
        const double coefficients[] = {p.a0, p.a1, p.a2, p.a3, p.a4, p.a5, p.a6};
        double sum = 0.0;
        for (int power = 6; power >= 0; --power) sum = sum * distance + coefficients[power];
        return sum / distance;
    };
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    Renderer::DistortionRenderer::frameSize(p, width, height);
    // The kernels measure to the corners' outer edges.
    const double recorded = std::hypot(p.currentWidth, p.currentHeight) / 2.0;
    const double rendered = std::hypot(std::max(width, p.currentWidth), std::max(height, p.currentHeight)) / 2.0;
    double largest = 0.0;
    // Near the centre the rounding of the curve's value there, which should be 0, would be divided by almost nothing.
    for (int step = 8; step <= stepCount; ++step) {
        const double distance = rendered * step / stepCount; // px from the centre
        const double sampled = factor(distance / rendered * static_cast<double>(p.imageRadius));
        const double ideal = factor(distance / recorded * static_cast<double>(p.frameImageRadius));
        largest = std::max(largest, distance * std::abs(sampled - ideal));
    }
    return largest;
}

} // namespace Host
