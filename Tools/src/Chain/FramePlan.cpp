#include "Chain/FramePlan.h"

#include <fmt/format.h>

#include <algorithm>
#include <boost/math/policies/error_handling.hpp>
#include <cmath>
#include <limits>
#include <span>

#include "Chain/RadialSampling.h"
#include "Core/AspectRatio.h"
#include "Exception/Exception.h"
#include "FrameSizing.h"
#include "Renderer/DistortionRenderer.h"

namespace Tools {
namespace {

using DD::Image::Box;
using FrameSizing::Size;

enum class Step { Shading, Distortion };

std::span<const Step> listed(Steps steps) {
    static constexpr Step shadingThenDistortion[] = {Step::Shading, Step::Distortion, Step::Shading};
    const std::span all(shadingThenDistortion);
    switch (steps) {
        case Steps::Shading:
            return all.first(1);
        case Steps::Distortion:
            return all.subspan(1, 1);
        case Steps::ShadingThenDistortion:
            return all.first(2);
        case Steps::DistortionThenShading:
            return all.last(2);
    }
    return {};
}

/// Follows a picture through the nodes.
class Walk {
public:
    Walk(const PictureShape& shape, Steps steps, Core::FramePreparation& preparation, const Core::FrameToCorrect& frame)
        : m_format(shape.formatBox()),
          m_recorded(FrameSizing::sizeOf(m_format)),
          m_steps(listed(steps)),
          m_preparation(preparation),
          m_aspectRatio(frame.recordingFormat) {
        if (shape.overscan) m_recorded = FrameSizing::withoutOverscan(m_recorded, *shape.overscan);
    }

    void operator()(const Box& shown, FramePlan& plan) const {
        plan.shown = shown;
        plan.box = shown;
        plan.isAccepted = true;
        plan.refused = {};
        for (const Step step : m_steps) walk(step, plan);
    }

private:
    void walk(Step step, FramePlan& plan) const {
        const Size frame = FrameSizing::frameAround(plan.box, m_format);
        plan.box = FrameSizing::boxCenteredOn(FrameSizing::sizeOf(m_format), frame);
        lookAt(plan);
        Core::FrameToCorrect prepared = plan.frame;
        prepared.frameData.width = static_cast<std::uint32_t>(plan.box.w());
        prepared.frameData.height = static_cast<std::uint32_t>(plan.box.h());
        prepared.frameData.overscan = FrameSizing::overscan(frame, m_recorded);
        unsigned int width = prepared.frameData.width, height = prepared.frameData.height;
        if (step == Step::Distortion) {
            plan.distortion = m_preparation.parameters(prepared).distortion.value();
            Renderer::DistortionRenderer::frameSize(*plan.distortion, width, height);
        }
        plan.box = FrameSizing::boxCenteredOn(
            FrameSizing::sizeOf(m_format),
            {std::max<std::int64_t>(width, frame.width), std::max<std::int64_t>(height, frame.height)});
        if (step == Step::Distortion || m_steps.size() == 1) plan.frame = prepared;
        if (step == Step::Distortion) {
            plan.distortion->currentWidth = static_cast<std::uint32_t>(plan.box.w());
            plan.distortion->currentHeight = static_cast<std::uint32_t>(plan.box.h());
        }
        lookAt(plan);
    }

    void lookAt(FramePlan& plan) const {
        if (!plan.isAccepted ||
            m_aspectRatio.isThatOf(static_cast<std::uint32_t>(plan.box.w()), static_cast<std::uint32_t>(plan.box.h())))
            return;
        plan.isAccepted = false;
        plan.refused = plan.box;
    }

    const Box m_format;
    Size m_recorded;
    const std::span<const Step> m_steps;
    Core::FramePreparation& m_preparation;
    const Core::AspectRatio m_aspectRatio;
};

/// The box with the smallest border of black, left and right or above and below, that makes its frame larger.
Box withBorder(const Box& box, const Box& format) {
    const auto widthOf = [&](const Box& padded) { return FrameSizing::frameAround(padded, format).width; };
    const std::int64_t width = widthOf(box);
    Box wider = box, taller = box;
    do wider.pad(1, 0);
    while (widthOf(wider) <= width);
    do taller.pad(0, 1);
    while (widthOf(taller) <= width);
    return widthOf(wider) <= widthOf(taller) ? wider : taller;
}

/// One side of a window as it comes to lie in the rendered picture: the farthest outwards that any of its places does.
/// Distances from the centre, px.
class MovedSide {
public:
    /// The side lies at `distance`, which is negative for the left and the bottom side of a window around the centre,
    /// and reaches from `from` to `to` along itself.
    MovedSide(double distance, double from, double to)
        : m_distance(distance),
          m_nearest(std::hypot(distance, from <= 0.0 && to >= 0.0 ? 0.0 : std::min(std::abs(from), std::abs(to)))),
          m_farthest(std::hypot(distance, std::max(std::abs(from), std::abs(to)))) {}

    /// Places between these distances in the source move by these factors.
    void add(double sourceFrom, double sourceTo, double factorFrom, double factorTo) {
        if (std::max(sourceFrom, sourceTo) < m_nearest || std::min(sourceFrom, sourceTo) > m_farthest) return;
        m_smallest = std::min({m_smallest, factorFrom, factorTo});
        m_largest = std::max({m_largest, factorFrom, factorTo});
    }

    double lowest() const { return m_distance * (m_distance < 0.0 ? m_largest : m_smallest); }
    double highest() const { return m_distance * (m_distance < 0.0 ? m_smallest : m_largest); }
    bool isFound() const { return m_largest > 0.0; }

private:
    double m_distance;
    double m_nearest;
    double m_farthest;
    double m_smallest = std::numeric_limits<double>::infinity();
    double m_largest = 0.0;
};

/// The part of a box that has something in it when it is rendered from a picture that has pixels in the window alone.
Box filledBy(const Box& window, const Box& box, PixelSize format, const RadialSampling& sampling) {
    // A pixel takes in what is less than 1 px away. Of the outermost ones, those that take in less than this of the
    // picture's border may be left out: more than single precision moves a place by, less than anyone sees.
    constexpr double faint = 1.0 / 64.0;
    const double centreX = format.width / 2.0 - 0.5, centreY = format.height / 2.0 - 0.5;
    const double left = window.x() - 1.0 + faint - centreX, right = window.r() - faint - centreX;
    const double bottom = window.y() - 1.0 + faint - centreY, top = window.t() - faint - centreY;
    MovedSide sides[] = {{left, bottom, top}, {right, bottom, top}, {bottom, left, right}, {top, left, right}};

    constexpr double step = 0.5; // px; over one, the curve is a straight line
    const double end = halfDiagonal(box.w(), box.h());
    double lastSource = 0.0, lastFactor = 1.0 / sampling.factor(step);
    for (double distance = step; distance < end + step; distance += step) {
        const double source = sampling.sourceDistance(distance);
        const double factor = distance / source;
        // A curve that turns back may bring the window anywhere.
        if (!(source > lastSource) || !std::isfinite(factor)) return box;
        for (MovedSide& side : sides) side.add(lastSource, source, lastFactor, factor);
        lastSource = source;
        lastFactor = factor;
    }
    // A side that comes to lie nowhere lies beyond the box.
    const auto first = [](const MovedSide& side, double centre, int from, int to) {
        return side.isFound() ? static_cast<int>(std::clamp<double>(std::ceil(side.lowest() + centre), from, to))
                              : from;
    };
    const auto last = [](const MovedSide& side, double centre, int from, int to) {
        return side.isFound()
                   ? static_cast<int>(std::clamp<double>(std::floor(side.highest() + centre) + 1.0, from, to))
                   : to;
    };
    return {first(sides[0], centreX, box.x(), box.r()), first(sides[2], centreY, box.y(), box.t()),
            last(sides[1], centreX, box.x(), box.r()), last(sides[3], centreY, box.y(), box.t())};
}

} // namespace

Box PictureShape::formatBox() const { return {0, 0, static_cast<int>(format.width), static_cast<int>(format.height)}; }

Box PictureShape::whole() const {
    Box box = formatBox();
    box.merge(data);
    return box;
}

Box FramePlan::keptOf(const Box& window, const PictureShape& shape) const {
    if (!distortion) return window;
    Box result = window;
    result.merge(filledBy(window, box, shape.format, RadialSampling::rendered(*distortion)));
    result.intersect(box);
    return result;
}

std::string shapeRefusal(const FramePlan& plan, const PictureShape& shape) {
    const RecordingFormatDatabase::RecordingFormat& recording = plan.frame.recordingFormat;
    return fmt::format(
        "The picture's format of {} x {} px has the recording's aspect ratio ({} x {} px) only roughly, and in the "
        "frame around its data window ({} x {} px) the error is 2 px or more. Render the picture at the recording's "
        "size or an exact fraction of it, or crop its overscan.",
        shape.format.width, shape.format.height, recording.clipResolutionWidth, recording.clipResolutionHeight,
        plan.refused.w(), plan.refused.h());
}

FramePlan planFrame(const PictureShape& shape, Steps steps, Core::FramePreparation& preparation) {
    // Frames grow by a pixel or two at a time, and most of them are accepted.
    constexpr int mostSteps = 1000;
    FramePlan plan;
    plan.frame = preparation.retrieveFrameToCorrect().value();
    const std::vector<float>& distortion = plan.frame.record.radialDistortion;
    const bool isStraight =
        std::all_of(distortion.begin(), distortion.end(), [](float value) { return value == 0.0f; });
    plan.steps = isStraight && steps != Steps::Distortion ? Steps::Shading : steps;
    const Walk walk(shape, plan.steps, preparation, plan.frame);
    Box shown = shape.whole();
    walk(shown, plan);
    try {
        for (int i = 0; !plan.isAccepted && i < mostSteps; ++i) {
            shown = withBorder(shown, shape.formatBox());
            walk(shown, plan);
        }
    } catch (const Exception&) {
        plan.isAccepted = false; // so far out, the lens data mean nothing any more
    } catch (const boost::math::rounding_error&) {
        plan.isAccepted = false; // nor has the frame a size
    }
    if (!plan.isAccepted) walk(shape.whole(), plan);
    plan.kept = plan.keptOf(shape.data, shape);
    return plan;
}

} // namespace Tools
