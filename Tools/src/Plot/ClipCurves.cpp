#include "Plot/ClipCurves.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "CorrectionData/Calculations/Calculations.h"
#include "Report/Dimensions.h"
#include "Report/Failure.h"

namespace Tools {

using CorrectionData::Frame;

ClipCurves::ClipCurves(const CorrectionFileData& file) : m_file(file) {
    const std::vector<const Frame*> fitted = fittedFrames();
    chooseDrawn(fitted);
    const float lastHeight = m_drawn.front().lastHeight();
    m_isFormatKnown = format().imageRadius > 0.0f && format().clipResolutionWidth > 0;
    m_radius = m_isFormatKnown ? format().imageRadius : lastHeight;
    m_end = std::max(m_radius, lastHeight);
    if (m_isFormatKnown) {
        m_lengthFactor = halfDiagonal(format().clipResolutionWidth, format().clipResolutionHeight) /
                         static_cast<double>(format().imageRadius);
        m_lengthUnit = "px";
    }
    sampleClip(fitted);
}

std::vector<const Frame*> ClipCurves::fittedFrames() {
    std::vector<const Frame*> fitted;
    for (const auto& [frameNumber, frame] : m_file.content->frames) {
        const bool isNew = fitted.empty() || !haveEqualValues(*fitted.back(), frame);
        if (isNew) m_areAllEqual = fitted.empty();
        try {
            if (isNew) LensCurves{frame};
            fitted.push_back(&frame);
        } catch (const CorrectionData::CoefficentCalculationFailedException&) {
            if (m_failedCount++ == 0) m_firstFailed = frameNumber;
        }
    }
    if (fitted.empty()) {
        refuse(fmt::format(
            "{}: {}. Run \"lenscorrect check\" on it for the reasons.", m_file.path,
            m_file.content->frames.empty() ? "there is no frame to plot" : "no frame's curves can be fitted"));
    }
    return fitted;
}

void ClipCurves::chooseDrawn(const std::vector<const Frame*>& fitted) {
    for (const Frame* frame : {fitted.front(), fitted[fitted.size() / 2], fitted.back()}) {
        const bool isNew = std::none_of(m_drawn.begin(), m_drawn.end(), [&](const LensCurves& curves) {
            return haveEqualValues(curves.frame(), *frame);
        });
        if (isNew) m_drawn.emplace_back(*frame);
    }
}

void ClipCurves::sampleClip(const std::vector<const Frame*>& fitted) {
    const std::size_t count = std::min(fitted.size(), mostSamples);
    const Frame* before = nullptr;
    for (std::size_t i = 0; i < count; ++i) {
        const Frame* frame = fitted[count == 1 ? 0 : i * (fitted.size() - 1) / (count - 1)];
        if (before && haveEqualValues(*before, *frame)) {
            m_samples.push_back(m_samples.back());
        } else {
            m_samples.push_back(sample(LensCurves(*frame)));
        }
        m_samples.back().frameNumber = static_cast<std::uint32_t>(frame->frameNumber);
        before = frame;
    }
}

ClipCurves::Sample ClipCurves::sample(const LensCurves& curves) const {
    Sample row;
    for (const auto& [part, name] : partHeights) {
        row.illumination.push_back(curves.illuminationAt(part * m_radius));
        row.distortion.push_back(curves.distortionAt(part * m_radius));
    }
    row.forwardResidual = m_lengthFactor * curves.largestForwardResidual();
    row.inverseResidual = m_lengthFactor * curves.largestInverseResidual();
    row.roundTrip = m_lengthFactor * curves.largestRoundTrip(m_radius);
    row.illuminationResidual = curves.largestIlluminationResidual();
    return row;
}

std::string ClipCurves::frameName(const LensCurves& curves) const {
    if (m_areAllEqual) return "all frames";
    return fmt::format("frame {}", curves.frame().frameNumber);
}

} // namespace Tools
