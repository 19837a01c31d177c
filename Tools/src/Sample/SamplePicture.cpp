#include "Sample/SamplePicture.h"

#include <algorithm>
#include <cmath>

namespace Tools {
namespace {

constexpr double pi = 3.14159265358979323846;
/// Lines have the profile exp(-t² / 2σ²) across, t and σ in px.
constexpr double sigma = 2.0;
/// Fine texture: sin(kx) sin(ky).
constexpr double textureWavelength = 16.0; // px
constexpr double textureFrequency = 2.0 * pi / textureWavelength;
/// The gradient is a sine over many pixels, so that the picture stays bounded without an end.
constexpr double gradientWavelength = 6000.0; // px
constexpr double gradientFrequency = 2.0 * pi / gradientWavelength;

struct Strength {
    double base, gradient, grid, slanted, texture;
};
constexpr std::array<Strength, 3> strengths = {{{0.24, 0.08, 0.35, 0.25, 0.04},   // red
                                                {0.20, 0.08, 0.38, 0.15, 0.06},   // green
                                                {0.20, 0.08, 0.40, 0.05, 0.08}}}; // blue

/// Brightness of a family of parallel lines at distance `t` px from one of them.
double lines(double t, double spacing) {
    const double nearest = t - spacing * std::round(t / spacing);
    return std::exp(-nearest * nearest / (2.0 * sigma * sigma));
}

template <typename Limit>
double largest(Limit limit) {
    double value = 0.0;
    for (const Strength& strength : strengths) value = std::max(value, limit(strength));
    return value;
}

} // namespace

SamplePicture::SamplePicture(double gridSpacing) : m_spacing(std::max(gridSpacing, 24.0)) {}

std::array<float, 3> SamplePicture::color(double x, double y, std::int32_t frameIndex) const {
    const double phase = 2.0 * pi * frameIndex / 24.0;
    const double gradient = std::sin(gradientFrequency * (x + y));
    const double vertical = lines(x, m_spacing);
    const double horizontal = lines(y, m_spacing);
    // Where grid lines cross, the brighter one does not add to the other: 1 - (1 - a)(1 - b).
    const double grid = vertical + horizontal - vertical * horizontal;
    // 30 degrees to the horizontal; not a multiple of the grid's spacing, so that crossings vary.
    const double slanted = lines(0.5 * x + 0.8660254037844386 * y, 2.3 * m_spacing);
    const double texture = std::sin(textureFrequency * x + phase) * std::sin(textureFrequency * y);
    std::array<float, 3> color{};
    for (std::size_t channel = 0; channel < color.size(); ++channel) {
        const Strength& strength = strengths[channel];
        color[channel] = static_cast<float>(strength.base + strength.gradient * gradient + strength.grid * grid +
                                            strength.slanted * slanted + strength.texture * texture);
    }
    return color;
}

double SamplePicture::maximum() {
    return largest([](const Strength& s) { return s.base + s.gradient + s.grid + s.slanted + s.texture; });
}

double SamplePicture::maximumGradient() {
    // A line's profile is steepest at t = σ: exp(-1/2) / σ. Of the grid, the two directions are perpendicular, and each
    // is weakened by the other, so together they are no steeper than √2 of one.
    const double line = std::exp(-0.5) / sigma;
    return largest([&](const Strength& s) {
        return s.gradient * gradientFrequency * std::sqrt(2.0) + s.grid * line * std::sqrt(2.0) + s.slanted * line +
               s.texture * textureFrequency;
    });
}

double SamplePicture::maximumCurvature() {
    // A line's profile is most curved at t = 0: 1 / σ². For the grid a + b - ab, the second derivative in the direction
    // (c, s) is a''(1-b)c² + b''(1-a)s² - 2a'b'cs. Since |a''|, |b''| <= 1/σ², 0 <= a, b <= 1 and |a'b'| <= exp(-1)/σ²,
    // it is below (1 + exp(-1)) / σ². The texture's is k² |sin sin (c² + s²) - 2 cos cos cs| <= k².
    const double line = 1.0 / (sigma * sigma);
    return largest([&](const Strength& s) {
        return s.gradient * 2.0 * gradientFrequency * gradientFrequency + s.grid * line * (1.0 + std::exp(-1.0)) +
               s.slanted * line + s.texture * textureFrequency * textureFrequency;
    });
}

} // namespace Tools
