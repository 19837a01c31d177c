#include "Sample/SampleClip.h"

#include <gtest/gtest.h>

#include <cmath>

#include "CorrectionFile/Parser/Parser.h"
#include "Support/FailureText.h"

using Tools::PixelSize;
using Tools::SampleClip;

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
