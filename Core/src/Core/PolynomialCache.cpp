#include "Core/PolynomialCache.h"

#include <cstddef>

namespace Core {

namespace {

// More than the frames of one node that a host has in work at once.
constexpr std::size_t capacity = 64;

} // namespace

Polynomial PolynomialCache::shading(const CorrectionData::Frame& frame) {
    return remembered(m_shading, frame.heights, frame.shading, [&frame] { return shadingPolynomial(frame); });
}

DistortionPolynomials PolynomialCache::distortion(const CorrectionData::Frame& frame) {
    return remembered(m_distortion, frame.heights, frame.radialDistortion,
                      [&frame] { return distortionPolynomials(frame); });
}

template <typename Fit, typename Calculation>
Fit PolynomialCache::remembered(Entries<Fit>& entries, const std::vector<float>& heights,
                                const std::vector<float>& values, Calculation calculation) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    for (const Entry<Fit>& entry : entries) {
        if (entry.heights == heights && entry.values == values) return entry.fit;
    }
    const Fit fit = calculation();
    entries.push_front({heights, values, fit});
    if (entries.size() > capacity) entries.pop_back();
    return fit;
}

} // namespace Core
