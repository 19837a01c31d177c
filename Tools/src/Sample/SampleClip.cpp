#include "Sample/SampleClip.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <thread>

#include "CorrectionData/Calculations/Calculations.h"
#include "Report/Failure.h"

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

namespace {

constexpr double firstFocalLength = 32.0; // mm
constexpr double lastFocalLength = 32.5;
constexpr std::int32_t framesPerSecond = 24;

/// What a correction file's record says at one height, in the file's units and digits.
std::string text(double value) { return fmt::format("{:.6f}", value); }

double toFloat(const std::string& digits) { return static_cast<double>(std::stof(digits)); }

double valueOf(const std::vector<float>& coefficients, double x) {
    double value = 0.0;
    for (std::size_t power = coefficients.size(); power > 0; --power) {
        value = value * x + static_cast<double>(coefficients[power - 1]);
    }
    return value;
}

std::vector<float> fitted(const std::vector<float>& x, const std::vector<float>& y) {
    std::vector<float> coefficients;
    CorrectionData::Calculations::calculateCoefficients(x, y, coefficients);
    return coefficients;
}

/// Calls `work(row)` for every row, on all cores.
template <typename Work>
void forEachRow(std::uint32_t rows, Work work) {
    const std::uint32_t threadCount = std::clamp(std::thread::hardware_concurrency(), 1u, 64u);
    std::vector<std::thread> threads;
    const auto part = [&](std::uint32_t first) {
        for (std::uint32_t row = first; row < rows; row += threadCount) work(row);
    };
    for (std::uint32_t first = 1; first < threadCount; ++first) threads.emplace_back(part, first);
    part(0);
    for (std::thread& thread : threads) thread.join();
}

} // namespace

SampleClip::SampleClip(PixelSize size, std::int32_t frameCount)
    : m_size(size), m_frameCount(frameCount), m_picture(std::round(size.width / 16.0)) {
    if (frameCount < 1 || frameCount > 100000) {
        refuse(fmt::format("A sample cannot have {} frames; give 1 to 100000.", frameCount));
    }
    const auto isUsable = [](std::uint32_t side) { return side >= 64 && side <= 16384; };
    if (!isUsable(size.width) || !isUsable(size.height)) {
        refuse(fmt::format("A sample cannot have {}x{} pixels; each side must have 64 to 16384.", size.width,
                           size.height));
    }
}

double SampleClip::halfDiagonal() const { return Tools::halfDiagonal(m_size.width, m_size.height); }

double SampleClip::sensorWidth() const { return imageRadius * m_size.width / halfDiagonal(); }

SampleLens SampleClip::lens(std::int32_t index) const {
    const double part = m_frameCount > 1 ? static_cast<double>(index) / (m_frameCount - 1) : 0.0;
    return SampleLens(firstFocalLength + part * (lastFocalLength - firstFocalLength));
}

template <typename Pixel>
std::vector<float> SampleClip::render(Pixel pixel) const {
    std::vector<float> pixels(std::size_t{m_size.width} * m_size.height * 3);
    forEachRow(m_size.height, [&](std::uint32_t row) {
        const double y = row - (m_size.height / 2.0 - 0.5);
        float* sample = pixels.data() + std::size_t{row} * m_size.width * 3;
        for (std::uint32_t column = 0; column < m_size.width; ++column) {
            const std::array<float, 3> color = pixel(column - (m_size.width / 2.0 - 0.5), y);
            sample = std::copy(color.begin(), color.end(), sample);
        }
    });
    return pixels;
}

std::vector<float> SampleClip::plate(std::int32_t index) const {
    const SampleLens lensOfFrame = lens(index);
    const double millimetresPerPixel = imageRadius / halfDiagonal();
    return render([&](double x, double y) {
        const double recorded = std::hypot(x, y) * millimetresPerPixel;
        const double factor = recorded > 0.0 ? lensOfFrame.idealDistance(recorded) / recorded : 1.0;
        std::array<float, 3> color = m_picture.color(x * factor, y * factor, index);
        const auto illumination = static_cast<float>(lensOfFrame.illumination(recorded));
        for (float& channel : color) channel *= illumination;
        return color;
    });
}

std::vector<float> SampleClip::clean(std::int32_t index) const {
    return render([&](double x, double y) { return m_picture.color(x, y, index); });
}

std::vector<double> SampleClip::heights() const {
    // Closer together towards the corner, where the curves bend; the last one a little outside, so that the corner
    // itself is interpolated.
    std::vector<double> heights;
    for (const double part : {0.0, 0.25, 0.45, 0.62, 0.78, 0.9, 1.02}) heights.push_back(part * imageRadius);
    return heights;
}

std::string SampleClip::timecode(std::int32_t index) const {
    const std::int32_t seconds = index / framesPerSecond;
    return fmt::format("{:02}:{:02}:{:02}:{:02}", 1 + seconds / 3600, seconds / 60 % 60, seconds % 60,
                       index % framesPerSecond);
}

std::uint32_t SampleClip::timecodeWord(std::int32_t index) const {
    const std::string digits = timecode(index);
    std::uint32_t word = 0;
    for (const char digit : digits) {
        if (digit != ':') word = word << 4 | static_cast<std::uint32_t>(digit - '0');
    }
    return word;
}

std::string SampleClip::correctionFile() const {
    std::string file = fmt::format(
        "# OLCF Version 3\n"
        "HEADER_START\n"
        "lensManufacturer:=Sample\n"
        "lensTypeName:=Spherical 32 mm\n"
        "lensSerialNumber:=1\n"
        "lensMinFocalLength:=32\n"
        "lensMaxFocalLength:=32\n"
        "cameraManufacturer:=\n"
        "cameraModel:=\n"
        "sensorWidth:={}\n"
        "clipName:=plate\n"
        "videoFileName:=plate\n"
        "clipDurationFrames:={}\n"
        "clipWidth:={}\n"
        "clipHeight:={}\n"
        "tcFps:={}\n"
        "tcDrop:=0\n"
        "enableLensShadingCorrection:=1\n"
        "shadingGamma:=1\n"
        "enableLensDistortionCorrection:=1\n"
        "distortionZoom:=1\n"
        "HEADER_END\n"
        "frame;heights [mm];shading [%];radial distortion [permille];;;;;;timecode\n",
        text(sensorWidth()), m_frameCount, m_size.width, m_size.height, framesPerSecond);
    const std::vector<double> heightsOfFrame = heights();
    for (std::int32_t index = 0; index < m_frameCount; ++index) {
        const SampleLens lensOfFrame = lens(index);
        std::string heightColumn, shadingColumn, distortionColumn;
        for (const double height : heightsOfFrame) {
            const std::string comma = heightColumn.empty() ? "" : ",";
            const double distortion = height > 0.0 ? (1.0 - lensOfFrame.idealDistance(height) / height) * 1000.0 : 0.0;
            heightColumn += comma + text(height);
            shadingColumn += comma + text(lensOfFrame.illumination(height) * 100.0);
            distortionColumn += comma + text(distortion);
        }
        file +=
            fmt::format("{};{};{};{};;;;;;{}\n", index, heightColumn, shadingColumn, distortionColumn, timecode(index));
    }
    return file;
}

SampleErrorBound SampleClip::errorBound() const {
    SampleErrorBound worst;
    // Focal lengths in between lie between these in everything.
    for (const std::int32_t index : {0, m_frameCount / 2, m_frameCount - 1}) {
        SampleErrorBound bound = errorBound(index);
        worst.displacement = std::max(worst.displacement, bound.displacement);
        worst.interpolation = std::max(worst.interpolation, bound.interpolation);
        worst.movement = std::max(worst.movement, bound.movement);
        worst.shading = std::max(worst.shading, bound.shading);
        worst.rounding = std::max(worst.rounding, bound.rounding);
    }
    worst.sum();
    return worst;
}

SampleErrorBound SampleClip::errorBound(std::int32_t index) const {
    const SampleLens lensOfFrame = lens(index);

    // The curves that the correction fits through the record, with the record's own digits.
    std::vector<float> recorded, ideal, shading;
    for (const double height : heights()) {
        const double h = toFloat(text(height));
        const double permille = height > 0.0 ? (1.0 - lensOfFrame.idealDistance(height) / height) * 1000.0 : 0.0;
        recorded.push_back(static_cast<float>(h));
        ideal.push_back(static_cast<float>(h * (toFloat(text(permille)) / -1000.0 + 1.0)));
        shading.push_back(static_cast<float>(toFloat(text(lensOfFrame.illumination(height) * 100.0))));
    }
    const std::vector<float> toIdeal = fitted(recorded, ideal);
    const std::vector<float> toRecorded = fitted(ideal, recorded);
    const std::vector<float> brightness = fitted(recorded, shading);

    // The corrected frame: grown by the corner's factor, to whole pixels and at least the clip's aspect ratio, on both
    // sides alike.
    const double idealRadius = valueOf(toIdeal, imageRadius);
    const double growth = idealRadius / imageRadius;
    const double aspect = static_cast<double>(m_size.width) / m_size.height;
    double width = std::ceil(growth * (m_size.width - 1)) + 1;
    double height = std::ceil(growth * (m_size.height - 1)) + 1;
    const double grownWidth = std::max(width, std::ceil(height * aspect));
    const double grownHeight = std::max(height, std::ceil(width / aspect));
    width = m_size.width + 2 * std::round((grownWidth - m_size.width) / 2);
    height = m_size.height + 2 * std::round((grownHeight - m_size.height) / 2);
    const double correctedHalfDiagonal = Tools::halfDiagonal(width, height);

    SampleErrorBound bound;
    double stretch = 1.0; // largest change of place in the ideal picture per px of the plate
    double bend = 0.0;    // and the largest change of that, per px
    constexpr int steps = 2000;
    const double pixelsPerMillimetre = halfDiagonal() / imageRadius;
    const double step = imageRadius / steps;
    for (int count = 1; count <= steps; ++count) {
        const double r = step * count;
        const double before = lensOfFrame.idealDistance(r - step);
        const double here = lensOfFrame.idealDistance(r);
        const double after = lensOfFrame.idealDistance(r + step);
        const double slope = (after - before) / (2.0 * step);
        const double curvature = std::abs(after - 2.0 * here + before) / (step * step);
        stretch = std::max({stretch, slope, here / r});
        bend = std::max(bend, (curvature + 2.0 * std::abs(slope - here / r) / r) / pixelsPerMillimetre);
        const double relative = valueOf(brightness, r) / (100.0 * lensOfFrame.illumination(r)) - 1.0;
        bound.shading = std::max(bound.shading, std::abs(relative));

        // Where the pixel of the corrected frame at distance p is taken from, and which place of the ideal picture the
        // plate shows there.
        const double p = halfDiagonal() * count / steps;
        const double distance = p / correctedHalfDiagonal * idealRadius;
        const double source = p * valueOf(toRecorded, distance) / distance;
        const double shown = lensOfFrame.idealDistance(source / pixelsPerMillimetre) * pixelsPerMillimetre;
        bound.displacement = std::max(bound.displacement, std::abs(shown - p));
    }
    // Single precision on the device: places are off by up to a thousandth of a pixel at 4096 px of width.
    bound.displacement += 1e-3 * std::max(1.0, m_size.width / 4096.0);

    const double gradient = SamplePicture::maximumGradient();
    const double curvature = SamplePicture::maximumCurvature() * stretch * stretch + gradient * bend;
    bound.interpolation = 2.0 * curvature / 8.0;
    bound.movement = gradient * bound.displacement;
    bound.shading *= SamplePicture::maximum();
    bound.rounding = 3.0 * std::ldexp(1.0, -11) * SamplePicture::maximum();
    bound.sum();
    return bound;
}

} // namespace Tools
