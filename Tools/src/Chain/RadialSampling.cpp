#include "Chain/RadialSampling.h"

#include <algorithm>
#include <cmath>

#include "Report/Dimensions.h"

namespace Tools {

RadialSampling RadialSampling::rendered(const Renderer::DistortionParameter& p) {
    RadialSampling sampling;
    sampling.m_coefficients = {double{p.a0}, double{p.a1}, double{p.a2}, double{p.a3},
                               double{p.a4}, double{p.a5}, double{p.a6}};
    sampling.m_scale = static_cast<double>(p.imageRadius) / halfDiagonal(p.currentWidth, p.currentHeight);
    return sampling;
}

RadialSampling RadialSampling::at(double millimetresPerPixel) const {
    RadialSampling sampling = *this;
    sampling.m_scale = millimetresPerPixel;
    return sampling;
}

double RadialSampling::sourceDistance(double distance) const {
    const double x = distance * m_scale;
    double sum = 0.0;
    for (auto coefficient = m_coefficients.rbegin(); coefficient != m_coefficients.rend(); ++coefficient) {
        sum = sum * x + *coefficient;
    }
    return sum / m_scale;
}

double nodeDeviation(const Renderer::DistortionParameter& node, double idealMillimetresPerPixel) {
    constexpr int stepCount = 512; // the curves are smooth, and mostly the largest deviation is at the corner
    const RadialSampling rendered = RadialSampling::rendered(node);
    const RadialSampling ideal = rendered.at(idealMillimetresPerPixel);
    const double end = halfDiagonal(node.currentWidth, node.currentHeight);
    double largest = 0.0;
    for (int step = 0; step <= stepCount; ++step) {
        const double distance = end * step / stepCount;
        largest = std::max(largest, std::abs(rendered.sourceDistance(distance) - ideal.sourceDistance(distance)));
    }
    return largest;
}

} // namespace Tools
