#include "Lens/RoundTrip.h"

#include <cmath>

#include "Lens/LensCurves.h"

namespace Tools {

namespace {

constexpr double step = 0.25; // px; the curves are smooth over hundreds of them

/// The larger one; what is not a number is larger than all.
double larger(double a, double b) { return std::isnan(a) || a >= b ? a : b; }

/// Largest |Q(P(r)) − r| up to the corner, mm, in double precision.
double largestAnalyticError(const Core::DistortionPolynomials& curves, double end, double stepLength) {
    const auto at = [](const Core::Polynomial& polynomial, double x) {
        double sum = 0.0;
        for (auto c = polynomial.coefficients.rbegin(); c != polynomial.coefficients.rend(); ++c) {
            sum = sum * x + static_cast<double>(*c);
        }
        return sum;
    };
    double largest = 0.0;
    for (double height = 0.0; height <= end; height += stepLength) {
        largest = larger(largest, std::abs(at(curves.undistorted, at(curves.distorted, height)) - height));
    }
    return largest;
}

double largestMapError(const FrameGeometry& undistortion, const FrameGeometry& redistortion, double end) {
    const RadialSampling undistorting = undistortion.sampling(Geometry::Node);
    const RadialSampling redistorting = redistortion.sampling(Geometry::Node);
    double largest = 0.0;
    for (double distance = 0.0; distance <= end; distance += step) {
        const double restored = undistorting.sourceDistance(redistorting.sourceDistance(distance));
        largest = larger(largest, std::abs(restored - distance));
    }
    return largest;
}

/// A picture whose pixels say where they are: R = x, G = y, A = 1. Interpolation reproduces it exactly.
Image::Frame placesPicture(const Image::Window& window, const FrameGeometry& geometry) {
    Image::Frame picture;
    Image::Part& part = picture.parts.emplace_back();
    part.dataWindow = window;
    part.displayWindow = geometry.format;
    part.pixelAspectRatio = geometry.pixelAspectRatio;
    part.channels = Image::floatRgbaChannels();
    part.layOutPlanes();
    part.allocatePixels();
    Image::Plane& plane = part.planes.front();
    std::vector<float> row(plane.width * 4);
    for (std::size_t y = 0; y < plane.height; ++y) {
        for (std::size_t x = 0; x < plane.width; ++x) {
            row[x * 4] = static_cast<float>(x) + static_cast<float>(window.minX);
            row[x * 4 + 1] = static_cast<float>(y) + static_cast<float>(window.minY);
            row[x * 4 + 2] = 0.0f;
            row[x * 4 + 3] = 1.0f;
        }
        plane.rowFromFloat(y, row.data());
    }
    return picture;
}

double largestPlaceError(const Image::Part& part, const Image::Window& window) {
    const Image::Plane& plane = part.planes.front();
    std::vector<float> row(plane.width * 4);
    double largest = 0.0;
    for (std::size_t y = 0; y < plane.height; ++y) {
        const double placeY = static_cast<double>(part.dataWindow.minY) + static_cast<double>(y);
        if (placeY < window.minY || placeY > window.maxY) continue;
        plane.rowToFloat(y, row.data());
        for (std::size_t x = 0; x < plane.width; ++x) {
            const double placeX = static_cast<double>(part.dataWindow.minX) + static_cast<double>(x);
            const float* const pixel = row.data() + x * 4;
            // Pixels blended with the black surround encode no position.
            constexpr float opaque = 0.9999f;
            if (placeX < window.minX || placeX > window.maxX || !(pixel[3] >= opaque)) continue;
            largest = std::max(
                largest, std::hypot(static_cast<double>(pixel[0]) - placeX, static_cast<double>(pixel[1]) - placeY));
        }
    }
    return largest;
}

} // namespace

double RoundTrip::largestError() const { return larger(larger(analytic, maps), rendered.value_or(0.0)); }

RoundTrip roundTrip(LensGeometry& lens, std::int32_t frame, bool isRendered) {
    const FrameGeometry undistortion = lens.geometry(frame, Direction::Undistort);
    const FrameGeometry redistortion = lens.redistortion(frame, undistortion);
    const LensCurves curves(undistortion.lens.record);
    const double scale = undistortion.idealMillimetresPerPixel;

    RoundTrip result;
    result.frame = frame;
    result.file = lens.file(frame);
    result.format = {static_cast<std::uint32_t>(undistortion.format.width()),
                     static_cast<std::uint32_t>(undistortion.format.height())};
    result.undistorted = undistortion.picture;
    result.redistorted = redistortion.picture;
    result.imageRadius = undistortion.formatHalfDiagonal() * scale;
    result.lastHeight = static_cast<double>(curves.lastHeight());
    result.analytic = largestAnalyticError(curves.distortion(), result.imageRadius, step * scale) / scale;
    result.maps = largestMapError(undistortion, redistortion, undistortion.formatHalfDiagonal());
    result.toCorrectedResidual = curves.largestForwardResidual() / scale;
    result.toRecordedResidual = curves.largestInverseResidual() / scale;
    result.deviation = undistortion.deviation();
    if (isRendered) {
        const Image::Window window = lens.inputWindow(frame);
        const Image::Frame restored = lens.renderRoundTrip(frame, placesPicture(window, undistortion));
        result.rendered = largestPlaceError(restored.parts.front(), window);
    }
    return result;
}

} // namespace Tools
