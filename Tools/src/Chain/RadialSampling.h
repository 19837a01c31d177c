#pragma once

#include <array>

#include "Renderer/DistortionParameter.h"

namespace Tools {

/// Where a rendered picture is sampled in its source: on the same ray from the common centre, at a distance that a
/// polynomial gives. The polynomial works in mm on the sensor, pictures in px, so a scale converts between them.
///
/// Computed in double precision; the kernels compute the same in single precision (within about 0.001 px at 4096 px). A
/// value type.
class RadialSampling {
public:
    /// What the kernels do: the half-diagonal of the rendered picture, from corner to corner of the pixels, stands for
    /// the image radius, in the rendered picture and in its source alike.
    static RadialSampling rendered(const Renderer::DistortionParameter& parameter);

    /// The same curve at another scale, in mm per px.
    RadialSampling at(double millimetresPerPixel) const;

    double millimetresPerPixel() const { return m_scale; }

    /// Distance from the centre in the source, px, for a distance in the rendered picture, px.
    double sourceDistance(double distance) const;

    /// The quotient of both; 1 at the centre.
    double factor(double distance) const { return distance > 0.0 ? sourceDistance(distance) / distance : 1.0; }

    bool operator==(const RadialSampling&) const = default;

private:
    std::array<double, 7> m_coefficients{}; ///< mm in the rendered picture → mm in its source
    double m_scale = 1.0;
};

/// Largest distance in px between where a node samples that renders the parameter's picture and where it ideally would,
/// at the given scale.
double nodeDeviation(const Renderer::DistortionParameter& node, double idealMillimetresPerPixel);

} // namespace Tools
