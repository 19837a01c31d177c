#include "Map/RadialSampling.h"

#include <algorithm>
#include <cmath>

namespace Host {

RadialSampling RadialSampling::rendered(const Renderer::DistortionParameter& p) {
    RadialSampling sampling;
    sampling.m_coefficients = {double{p.a0}, double{p.a1}, double{p.a2}, double{p.a3},
                               double{p.a4}, double{p.a5}, double{p.a6}};
    const double halfDiagonal = std::hypot(p.currentWidth, p.currentHeight) / 2.0;
    sampling.m_scale = static_cast<double>(p.imageRadius) / halfDiagonal;
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

double RadialSampling::largestDeviation(const RadialSampling& other, double end) const {
    constexpr int stepCount = 512; // the curves are smooth, and mostly the largest deviation is at the end
    double largest = 0.0;
    for (int step = 0; step <= stepCount; ++step) {
        const double distance = end * step / stepCount;
        largest = std::max(largest, std::abs(sourceDistance(distance) - other.sourceDistance(distance)));
    }
    return largest;
}

} // namespace Host
