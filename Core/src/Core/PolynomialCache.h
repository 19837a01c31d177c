#pragma once

#include <deque>
#include <mutex>
#include <vector>

#include "Core/CorrectionPolynomials.h"
#include "CorrectionData/Content.h"

namespace Core {

/// Remembers the polynomials of the frame records that were fitted last, so that sizing a frame and rendering it in
/// turn fit once. A record is known by its values, not by its number. Failed fits are not remembered.
/// Any thread, any number at once.
class PolynomialCache {
public:
    /// As shadingPolynomial and distortionPolynomials.
    Polynomial shading(const CorrectionData::Frame& frame);
    DistortionPolynomials distortion(const CorrectionData::Frame& frame);

private:
    template <typename Fit>
    struct Entry {
        std::vector<float> heights;
        std::vector<float> values;
        Fit fit;
    };
    template <typename Fit>
    using Entries = std::deque<Entry<Fit>>;

    template <typename Fit, typename Calculation>
    Fit remembered(Entries<Fit>& entries, const std::vector<float>& heights, const std::vector<float>& values,
                   Calculation calculation);

    std::mutex m_mutex;
    Entries<Polynomial> m_shading;
    Entries<DistortionPolynomials> m_distortion;
};

} // namespace Core
