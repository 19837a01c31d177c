#include "Sample/SampleLens.h"

#include <cmath>

namespace Tools {
namespace {

constexpr double k1 = -0.399431;
constexpr double k2 = 0.188924;

} // namespace

SampleLens::SampleLens(double focalLength) : m_focalLength(focalLength) {}

double SampleLens::idealDistance(double recordedDistance) const {
    // Newton's method from the recorded distance. The model rises monotonically, with a slope above 0.5 in the range,
    // so the error is squared about five times from a start that is 10 % off.
    const double d = recordedDistance / m_focalLength;
    double u = d;
    for (int step = 0; step < 6; ++step) {
        const double squared = u * u;
        const double error = u * (1.0 + squared * (k1 + squared * k2)) - d;
        const double slope = 1.0 + squared * (3.0 * k1 + squared * 5.0 * k2);
        u -= error / slope;
        if (std::abs(error) < 1e-15) break;
    }
    return u * m_focalLength;
}

double SampleLens::recordedDistance(double idealDistance) const {
    const double squared = idealDistance * idealDistance / (m_focalLength * m_focalLength);
    return idealDistance * (1.0 + squared * (k1 + squared * k2));
}

double SampleLens::illumination(double recordedDistance) const {
    const double u = idealDistance(recordedDistance) / m_focalLength;
    const double cosineSquared = 1.0 / (1.0 + u * u);
    return cosineSquared * cosineSquared;
}

} // namespace Tools
