#include "Core/ReferenceLens.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace Support {

namespace {

std::vector<double> doubles(const std::vector<float>& values) { return {values.begin(), values.end()}; }

std::vector<double> distortedHeights(const LensFrame& frame) {
    std::vector<double> distorted;
    for (std::size_t i = 0; i < frame.heights.size(); ++i) {
        const double radialDistortion = static_cast<double>(frame.radialDistortion[i]);
        distorted.push_back(static_cast<double>(frame.heights[i]) * (1.0 - radialDistortion / 1000.0));
    }
    return distorted;
}

double imageRadius(const LensFrame& frame) {
    const double width = static_cast<double>(frame.sensorWidth);
    const double height = width * frame.clipHeight / frame.clipWidth;
    return std::hypot(width / 2.0, height / 2.0) * (1.0 + static_cast<double>(frame.overscan) / 100.0);
}

} // namespace

ReferenceLens::Interpolation::Interpolation(std::vector<double> x, std::vector<double> y) {
    // Of seven points of which the first two share their height, the first is none.
    if (x.size() == 7 && x[0] == x[1]) {
        x.erase(x.begin());
        y.erase(y.begin());
    }
    m_x = std::move(x);
    m_differences = std::move(y);
    for (std::size_t order = 1; order < m_x.size(); ++order) {
        for (std::size_t i = m_x.size() - 1; i >= order; --i) {
            m_differences[i] = (m_differences[i] - m_differences[i - 1]) / (m_x[i] - m_x[i - order]);
        }
    }
}

double ReferenceLens::Interpolation::at(double x) const {
    double value = m_differences.back();
    for (std::size_t i = m_x.size() - 1; i-- > 0;) value = value * (x - m_x[i]) + m_differences[i];
    return value;
}

ReferenceLens::ReferenceLens(const LensFrame& frame)
    : m_frame(frame),
      m_shading(doubles(frame.heights), doubles(frame.shading)),
      m_distorted(doubles(frame.heights), distortedHeights(frame)),
      m_undistorted(distortedHeights(frame), doubles(frame.heights)),
      m_imageRadius(imageRadius(frame)) {}

double ReferenceLens::millimetres(double x, double y, double imageRadius) const {
    const double width = m_frame.width;
    const double height = m_frame.height;
    const double pixels = std::hypot(x - (width / 2.0 - 0.5), y - (height / 2.0 - 0.5));
    return pixels / (std::hypot(width, height) / 2.0) * imageRadius;
}

ReferenceLens::Position ReferenceLens::source(double x, double y) const {
    const double radius = m_frame.distort ? m_imageRadius : m_distorted.at(m_imageRadius);
    const double distance = millimetres(x, y, radius);
    const double sourceDistance = (m_frame.distort ? m_distorted : m_undistorted).at(distance);
    const double factor = distance > 0.0 ? sourceDistance / distance : 1.0;
    const double centerX = m_frame.width / 2.0 - 0.5;
    const double centerY = m_frame.height / 2.0 - 0.5;
    return {centerX + (x - centerX) * factor, centerY + (y - centerY) * factor};
}

double ReferenceLens::shadingFactor(double x, double y) const {
    const double illumination = m_shading.at(millimetres(x, y, m_imageRadius)) / 100.0;
    return m_frame.addShading ? illumination : 1.0 / illumination;
}

double ReferenceLens::frameFactor(double distance) const {
    return distance > 0.0 ? (m_frame.distort ? m_undistorted : m_distorted).at(distance) / distance : 1.0;
}

ReferenceLens::Size ReferenceLens::frameSize() const {
    const double radius = m_frame.distort ? m_distorted.at(m_imageRadius) : m_imageRadius;
    const double deltaX = (m_frame.width - 1) / 2.0;
    const double deltaY = (m_frame.height - 1) / 2.0;
    const double diagonal = std::hypot(deltaX, deltaY);
    const double corner = frameFactor(radius);
    const double right = frameFactor(deltaX * radius / diagonal);
    const double bottom = frameFactor(deltaY * radius / diagonal);
    const auto grown = [corner](double edge, unsigned int length) {
        return static_cast<unsigned int>(std::ceil(std::max(edge, corner) * (length - 1))) + 1;
    };
    const unsigned int width = grown(right, m_frame.width);
    const unsigned int height = grown(bottom, m_frame.height);
    // Whole lengths times the aspect ratio are often whole again; single precision is part of the rule here.
    const float aspectRatio = static_cast<float>(m_frame.clipWidth) / static_cast<float>(m_frame.clipHeight);
    return {std::max(width, static_cast<unsigned int>(std::ceil(static_cast<float>(height) * aspectRatio))),
            std::max(height, static_cast<unsigned int>(std::ceil(static_cast<float>(width) / aspectRatio)))};
}

} // namespace Support
