#include "Lens/FitProblems.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "Core/CorrectionPolynomials.h"
#include "CorrectionData/Calculations/Calculations.h"

namespace Tools {

namespace {

using Core::Polynomial;
using CorrectionData::Frame;

constexpr int stepCount = 128;
constexpr float nearHeights = 0.01f; // mm
constexpr float hugeTerm = 1000.0f;
constexpr float fewExtrapolation = 1.1f;

// The pair of neighbouring heights that lie closest; the first pair of seven may be equal.
bool nearestHeights(const Frame& frame, float& lower, float& upper) {
    std::vector<float> heights = frame.heights;
    if (heights.size() == 7 && heights[0] == heights[1]) heights.erase(heights.begin());
    std::sort(heights.begin(), heights.end());
    float distance = nearHeights;
    bool isFound = false;
    for (std::size_t i = 1; i < heights.size(); ++i) {
        if (heights[i] - heights[i - 1] >= distance) continue;
        lower = heights[i - 1];
        upper = heights[i];
        distance = upper - lower;
        isFound = true;
    }
    return isFound;
}

bool hasHugeTerm(const Polynomial& polynomial, float x, const std::vector<float>& values) {
    float largestValue = 0.0f;
    for (const float value : values) largestValue = std::max(largestValue, std::abs(value));
    for (std::size_t i = 0; i < polynomial.coefficients.size(); ++i) {
        const float term = std::abs(polynomial.coefficients[i] * std::pow(x, static_cast<float>(i)));
        if (term > hugeTerm * largestValue) return true;
    }
    return false;
}

// The first place where the curve does not rise any more; negative if there is none.
float turningPoint(const Polynomial& polynomial, float end) {
    float before = polynomial.at(0.0f);
    for (int step = 1; step <= stepCount; ++step) {
        const float x = end * static_cast<float>(step) / stepCount;
        const float value = polynomial.at(x);
        if (!(value > before)) return x;
        before = value;
    }
    return -1.0f;
}

float firstDarkHeight(const Polynomial& shading, float end) {
    for (int step = 0; step <= stepCount; ++step) {
        const float x = end * static_cast<float>(step) / stepCount;
        if (!(shading.at(x) > 0.0f)) return x;
    }
    return -1.0f;
}

} // namespace

std::vector<FitProblem> fitProblems(const Frame& frame, float imageRadius) {
    std::vector<FitProblem> problems;
    float lower = 0.0f;
    float upper = 0.0f;
    if (nearestHeights(frame, lower, upper)) {
        problems.push_back(
            upper > lower
                ? FitProblem{"near-equal-heights", fmt::format("heights {} and {} mm are nearly equal", lower, upper)}
                : FitProblem{"equal-heights", fmt::format("height {} mm occurs twice", lower)});
    }

    Polynomial shading;
    Core::DistortionPolynomials distortion;
    try {
        shading = Core::shadingPolynomial(frame);
        distortion = Core::distortionPolynomials(frame);
    } catch (const CorrectionData::CoefficentCalculationFailedException& exception) {
        problems.push_back({"fit-failed", fmt::format("the frame cannot be corrected: {}", exception.what())});
        return problems;
    }

    const float lastHeight = *std::max_element(frame.heights.begin(), frame.heights.end());
    const std::vector<float> distorted = Core::distortedHeights(frame);
    if (hasHugeTerm(shading, lastHeight, frame.shading) || hasHugeTerm(distortion.distorted, lastHeight, distorted) ||
        hasHugeTerm(distortion.undistorted, *std::max_element(distorted.begin(), distorted.end()), frame.heights)) {
        problems.push_back(
            {"huge-coefficients", "the fitted curve has huge coefficients and oscillates between the points"});
    }

    const float end = imageRadius > 0.0f ? imageRadius : lastHeight;
    if (const float dark = firstDarkHeight(shading, end); dark >= 0.0f) {
        problems.push_back(
            {"illumination", fmt::format("the fitted illumination is {:.3g} % at {:.4g} mm, within the image",
                                         shading.at(dark), dark)});
    }
    float turn = turningPoint(distortion.distorted, end);
    if (turn < 0.0f) turn = turningPoint(distortion.undistorted, distortion.distorted.at(end));
    if (turn >= 0.0f) {
        problems.push_back({"distortion-not-monotonic",
                            fmt::format("the fitted distortion turns back at {:.4g} mm, within the image", turn)});
    }
    if (imageRadius > lastHeight * fewExtrapolation) {
        problems.push_back(
            {"beyond-heights",
             fmt::format("the image extends to {:.4g} mm, but the last height is {} mm", imageRadius, lastHeight)});
    }
    return problems;
}

} // namespace Tools
