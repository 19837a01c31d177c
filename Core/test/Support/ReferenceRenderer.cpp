#include "Support/ReferenceRenderer.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <functional>

namespace {

struct Pixel {
    double channels[4] = {};
};

template <typename Parameter>
double sextic(const Parameter& p, double d) {
    return p.a0 + d * (p.a1 + d * (p.a2 + d * (p.a3 + d * (p.a4 + d * (p.a5 + d * p.a6)))));
}

struct Position {
    double x, y;
};

template <typename Parameter>
Position centerOf(const Parameter& p) {
    return {p.currentWidth / 2.0 - 0.5, p.currentHeight / 2.0 - 0.5};
}

// mm
template <typename Parameter>
double distanceFromCenter(const Parameter& p, double x, double y) {
    const Position center = centerOf(p);
    const double halfDiagonal = std::hypot(p.currentWidth, p.currentHeight) / 2.0;
    return std::hypot(x - center.x, y - center.y) / halfDiagonal * double{p.imageRadius};
}

template <typename Parameter>
std::vector<double> forEachPixel(const Parameter& p, const std::function<Pixel(unsigned x, unsigned y)>& pixelAt) {
    std::vector<double> output;
    for (unsigned y = 0; y < p.currentHeight; y++)
        for (unsigned x = 0; x < p.currentWidth; x++) {
            const Pixel pixel = pixelAt(x, y);
            output.insert(output.end(), std::begin(pixel.channels), std::end(pixel.channels));
        }
    return output;
}

// The input surrounded by endless (0, 0, 0, 0), with straight lines between pixel centres.
Pixel sample(const std::vector<float>& input, long width, long height, Position position) {
    Pixel pixel;
    for (long y = std::lround(std::floor(position.y)); y <= std::lround(std::ceil(position.y)); y++)
        for (long x = std::lround(std::floor(position.x)); x <= std::lround(std::ceil(position.x)); x++) {
            if (x < 0 || x >= width || y < 0 || y >= height) continue;
            const double weight = (1.0 - std::fabs(position.x - static_cast<double>(x))) *
                                  (1.0 - std::fabs(position.y - static_cast<double>(y)));
            for (std::size_t channel = 0; channel < 4; channel++)
                pixel.channels[channel] +=
                    weight * double{input[static_cast<std::size_t>(y * width + x) * 4 + channel]};
        }
    return pixel;
}

} // namespace

std::vector<double> ReferenceRenderer::render(const Renderer::DistortionParameter& p, const std::vector<float>& input) {
    if (p.renderMap)
        return forEachPixel(p, [&](unsigned x, unsigned y) {
            return Pixel{{1.0 * x / p.currentWidth, 1.0 * y / p.currentHeight, 0.0, 1.0}};
        });
    const Position center = centerOf(p);
    return forEachPixel(p, [&](unsigned x, unsigned y) {
        const double distance = distanceFromCenter(p, x, y);
        const double factor = distance > 0.0 ? sextic(p, distance) / distance : 1.0;
        return sample(input, p.currentWidth, p.currentHeight,
                      {center.x + (x - center.x) * factor, center.y + (y - center.y) * factor});
    });
}

std::vector<double> ReferenceRenderer::render(const Renderer::ShadingParameter& p, const std::vector<float>& input) {
    return forEachPixel(p, [&](unsigned x, unsigned y) {
        const double illumination = sextic(p, distanceFromCenter(p, x, y)) / 100.0;
        const double factor = p.reverse ? illumination : 1.0 / illumination;
        if (p.renderMap) return Pixel{{factor, factor, factor, 1.0}};
        const float* pixel = &input[(std::size_t{y} * p.currentWidth + x) * 4];
        Pixel corrected;
        for (std::size_t channel = 0; channel < 3; channel++)
            corrected.channels[channel] =
                std::pow(std::pow(double{pixel[channel]}, double{p.gamma}) * factor, 1.0 / double{p.gamma});
        corrected.channels[3] = double{pixel[3]};
        return corrected;
    });
}
