#include "Sample/SampleClip.h"

#include <gtest/gtest.h>

#include <cmath>

#include "CorrectionFile/Parser/Parser.h"
#include "Support/FailureText.h"

using Tools::PixelSize;
using Tools::SampleClip;
using Tools::SampleLens;
using Tools::SamplePicture;

TEST(SampleLens, DistortsByThePublishedModel) {
    const SampleLens lens(32.0);
    // u = 0.4: 0.4 · (1 - 0.399431 · 0.16 + 0.188924 · 0.0256)
    EXPECT_NEAR(lens.recordedDistance(12.8), 32.0 * 0.37637, 32.0 * 1e-5);
}

TEST(SampleLens, FindsBackToTheIdealDistance) {
    const SampleLens lens(32.0);
    for (double ideal = 0.0; ideal <= 16.0; ideal += 0.5) {
        EXPECT_NEAR(lens.idealDistance(lens.recordedDistance(ideal)), ideal, 1e-12) << ideal;
    }
}

TEST(SampleLens, FallsOffWithTheFourthPowerOfTheCosine) {
    const SampleLens lens(32.0);
    EXPECT_EQ(lens.illumination(0.0), 1.0);
    // At a field angle of 20 degrees: tan 20° = 0.363970, cos⁴ 20° = 0.779728.
    EXPECT_NEAR(lens.illumination(lens.recordedDistance(32.0 * 0.363970234)), 0.779728, 1e-6);
}

namespace {

struct Extremes {
    double value = 0.0, gradient = 0.0, curvature = 0.0;
};

/// Largest value, first and second differences along eight directions on a fine raster with crossings of all lines.
Extremes measure() {
    const SamplePicture picture(24.0);
    constexpr double h = 0.05; // px; its discretisation error is below 1 % of the limits
    Extremes extremes;
    for (double y = -60.0; y < 60.0; y += 0.37) {
        for (double x = -60.0; x < 60.0; x += 0.41) {
            const auto here = picture.color(x, y, 3);
            for (int direction = 0; direction < 4; ++direction) {
                const double dx = h * std::cos(direction * 0.7853981633974483);
                const double dy = h * std::sin(direction * 0.7853981633974483);
                const auto after = picture.color(x + dx, y + dy, 3);
                const auto before = picture.color(x - dx, y - dy, 3);
                for (std::size_t channel = 0; channel < 3; ++channel) {
                    extremes.value = std::max(extremes.value, double(here[channel]));
                    extremes.gradient = std::max(
                        extremes.gradient, std::abs(double(after[channel]) - double(before[channel])) / (2.0 * h));
                    // Floats are off by 6e-8 each: 1e-4 after the division.
                    extremes.curvature = std::max(
                        extremes.curvature,
                        std::abs(double(after[channel]) - 2.0 * double(here[channel]) + double(before[channel])) /
                                (h * h) -
                            1e-4);
                }
            }
        }
    }
    return extremes;
}

} // namespace

TEST(SamplePicture, StaysWithinItsStatedLimitsWithoutWastingThem) {
    const Extremes extremes = measure();
    EXPECT_LE(extremes.value, SamplePicture::maximum());
    EXPECT_LE(extremes.gradient, SamplePicture::maximumGradient());
    EXPECT_LE(extremes.curvature, SamplePicture::maximumCurvature());
    EXPECT_GT(extremes.value, 0.5 * SamplePicture::maximum());
    EXPECT_GT(extremes.gradient, 0.5 * SamplePicture::maximumGradient());
    EXPECT_GT(extremes.curvature, 0.5 * SamplePicture::maximumCurvature());
}

TEST(SamplePicture, MovesFromFrameToFrame) {
    const SamplePicture picture(120.0);
    EXPECT_NE(picture.color(13.0, 7.0, 0), picture.color(13.0, 7.0, 1));
}

namespace {

CorrectionData::Content contentOf(const SampleClip& clip) {
    CorrectionData::Content content;
    CorrectionFile::Parser().parse(clip.correctionFile(), content);
    return content;
}

/// The clip's plate, corrected by the plain formulas in double precision: divided by the brightness, and sampled
/// bilinearly where the lens recorded each place of the ideal picture.
double worstDifference(const SampleClip& clip, PixelSize size, std::int32_t index) {
    const std::vector<float> plate = clip.plate(index);
    const std::vector<float> clean = clip.clean(index);
    const double cx = size.width / 2.0 - 0.5, cy = size.height / 2.0 - 0.5;
    const double scale = SampleClip::imageRadius / clip.halfDiagonal();
    const auto lens = clip.lens(index);
    const auto value = [&](int x, int y, int channel) {
        const double illumination = lens.illumination(std::hypot(x - cx, y - cy) * scale);
        return double(plate[(static_cast<std::size_t>(y) * size.width + static_cast<std::size_t>(x)) * 3 +
                            static_cast<std::size_t>(channel)]) /
               illumination;
    };
    double worst = 0.0;
    for (int y = 2; y < int(size.height) - 2; ++y) {
        for (int x = 2; x < int(size.width) - 2; ++x) {
            const double ideal = std::hypot(x - cx, y - cy) * scale;
            const double factor = ideal > 0.0 ? lens.recordedDistance(ideal) / ideal : 1.0;
            const double sx = cx + (x - cx) * factor, sy = cy + (y - cy) * factor;
            const int left = int(std::floor(sx)), top = int(std::floor(sy));
            const double u = sx - left, v = sy - top;
            for (int channel = 0; channel < 3; ++channel) {
                const double sampled =
                    (1 - v) * ((1 - u) * value(left, top, channel) + u * value(left + 1, top, channel)) +
                    v * ((1 - u) * value(left, top + 1, channel) + u * value(left + 1, top + 1, channel));
                const double expected =
                    double(clean[(static_cast<std::size_t>(y) * size.width + static_cast<std::size_t>(x)) * 3 +
                                 static_cast<std::size_t>(channel)]);
                worst = std::max(worst, std::abs(sampled - expected));
            }
        }
    }
    return worst;
}

} // namespace

TEST(SampleClip, CorrectsToTheCleanReferenceWithinTheInterpolationError) {
    const PixelSize size{480, 270};
    const SampleClip clip(size, 3);
    const double worst = worstDifference(clip, size, 1);
    EXPECT_LE(worst, clip.errorBound().interpolation);
    EXPECT_GT(worst, 0.2 * clip.errorBound().interpolation) << "the bound says little";
}

TEST(SampleClip, StatesABoundThatAWrongPlaceWouldBreak) {
    // At the steepest place a shift of one pixel changes the picture by about the gradient.
    EXPECT_LT(SampleClip({1920, 1080}, 24).errorBound().total, Tools::SamplePicture::maximumGradient());
}

TEST(SampleClip, HasACorrectionFileThatNamesThePlate) {
    const CorrectionData::Content content = contentOf(SampleClip({1920, 1080}, 24));
    EXPECT_EQ(content.header.videoFileName, "plate");
    EXPECT_EQ(content.header.clipName, "plate");
    EXPECT_EQ(content.header.clipWidth, 1920u);
    EXPECT_EQ(content.header.clipHeight, 1080u);
    EXPECT_EQ(content.header.tcFps, 24.0f);
    EXPECT_NEAR(content.header.sensorWidth, 23.76f, 0.01f);
    EXPECT_EQ(content.frames.size(), 24u);
}

TEST(SampleClip, RecordsTheLensAtEachHeight) {
    const SampleClip clip({1920, 1080}, 2);
    const CorrectionData::Frame frame = contentOf(clip).frames.at(1);
    ASSERT_EQ(frame.heights.size(), 7u);
    for (std::size_t point = 0; point < 7; ++point) {
        const double height = double(frame.heights[point]);
        // The distorted height of the correction's formula is the height in the ideal picture.
        EXPECT_NEAR(height * (double(frame.radialDistortion[point]) / -1000.0 + 1.0),
                    clip.lens(1).idealDistance(height), 1e-5);
        EXPECT_NEAR(double(frame.shading[point]), 100.0 * clip.lens(1).illumination(height), 1e-4);
    }
    EXPECT_LT(frame.radialDistortion[6], -50.0f) << "barrel, well visible";
}

TEST(SampleClip, CountsTimecodes) {
    const SampleClip clip({64, 64}, 100);
    EXPECT_EQ(clip.timecode(0), "01:00:00:00");
    EXPECT_EQ(clip.timecode(99), "01:00:04:03");
    EXPECT_EQ(clip.timecodeWord(99), 0x01000403u);
    EXPECT_EQ(contentOf(clip).frames.at(99).timecode, "01:00:04:03");
}

TEST(SampleClip, StaysWithinTheFormatAtEveryAspectRatio) {
    for (const PixelSize size : {PixelSize{64, 64}, PixelSize{64, 640}, PixelSize{4096, 1716}}) {
        EXPECT_EQ(contentOf(SampleClip(size, 1)).frames.size(), 1u);
    }
}

TEST(SampleClip, RefusesImpossibleClips) {
    EXPECT_EQ(failureOf([] {
                  SampleClip({1920, 1080}, 0);
              }),
              "wrong use: A sample cannot have 0 frames; give 1 to 100000.");
    EXPECT_EQ(failureOf([] {
                  SampleClip({63, 1080}, 1);
              }),
              "wrong use: A sample cannot have 63x1080 pixels; each side must have 64 to 16384.");
}
