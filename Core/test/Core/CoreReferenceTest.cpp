// The facade's pictures against an independent evaluation in double precision, for random lenses.

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <random>

#include "Core/Core.h"
#include "Core/FakeCoreDataSource.h"
#include "Core/Image.h"
#include "Core/ReferenceLens.h"
#include "Support/CorrectionFileText.h"
#include "Support/OpenCLDevice.h"
#include "Support/TemporaryFolder.h"

using Support::Image;
using Support::LensFrame;
using Support::ReferenceLens;

namespace {

std::string listOf(const std::vector<float>& values) {
    std::string list;
    for (const float value : values) {
        char text[32];
        std::snprintf(text, sizeof(text), "%.9g", static_cast<double>(value)); // reads back as the same float
        list += (list.empty() ? "" : ",") + std::string(text);
    }
    return list;
}

class CoreReferenceTest : public OnOpenCLDevice {
protected:
    const Support::TemporaryFolder m_folder;
    Support::HostFrame m_host;
    Core::Core m_core{std::make_unique<Support::FakeCoreDataSource>(m_host)};
    int m_clips = 0;

    /// A lens of a random design: smooth curves, a little measurement noise, barrel or pincushion.
    static LensFrame randomLens(unsigned int seed) {
        std::mt19937 random(seed);
        const auto between = [&random](float low, float high) {
            return low + (high - low) * static_cast<float>(random() >> 8) / 16777216.0f;
        };
        LensFrame lens;
        const unsigned int clipSizes[][2] = {{4096, 2160}, {2880, 2160}, {1920, 1080}, {3424, 2202}};
        const auto& clipSize = clipSizes[random() % 4];
        lens.clipWidth = clipSize[0];
        lens.clipHeight = clipSize[1];
        lens.width = 40 + static_cast<unsigned int>(random() % 120);
        lens.height = static_cast<unsigned int>(
            std::ceil(static_cast<float>(lens.width) /
                      (static_cast<float>(lens.clipWidth) / static_cast<float>(lens.clipHeight))));
        lens.overscan = seed % 3 == 0 ? between(1.0f, 15.0f) : 0.0f;
        lens.sensorWidth = between(20.0f, 32.0f);
        const float reach = 21.4f;
        const bool isVersion2 = seed % 2 == 0;
        if (isVersion2) {
            lens.heights = {0.0f, 5.0f, 10.0f, 15.0f, 18.0f, 21.4f};
        } else if (seed % 5 == 1) {
            lens.heights = {0.0f, 0.0f, 4.0f, 9.0f, 13.0f, 18.0f, 22.0f};
        } else {
            for (int i = 0; i < 7; ++i) lens.heights.push_back(static_cast<float>(i) * 3.6f + between(0.0f, 0.8f));
        }
        const float bend = between(-40.0f, 40.0f);
        const float wave = between(-12.0f, 12.0f);
        const float fallOff = between(5.0f, 35.0f);
        for (const float height : lens.heights) {
            const float square = height * height / (reach * reach);
            lens.radialDistortion.push_back(bend * square + wave * square * square + between(-0.05f, 0.05f));
            lens.shading.push_back(99.5f - fallOff * square + between(-0.3f, 0.3f));
        }
        lens.distort = (seed / 2) % 2 == 0;
        lens.addShading = (seed / 4) % 2 == 0;
        return lens;
    }

    void givenLens(const LensFrame& lens) {
        Support::CorrectionFileText text;
        text.with("sensorWidth", listOf({lens.sensorWidth}))
            .with("clipWidth", std::to_string(lens.clipWidth))
            .with("clipHeight", std::to_string(lens.clipHeight));
        std::string line = "0;";
        if (lens.heights.size() == 7) {
            line += listOf(lens.heights) + ";";
        } else {
            text.withVersionLine("# OLCF Version 2");
        }
        text.withFrameLine(line + listOf(lens.shading) + ";" + listOf(lens.radialDistortion) + ";;;;;;01.00.00.00");
        m_host.correctionFilePath = m_folder.write(std::to_string(m_clips++) + ".olcf", text.string());
        m_host.clipFileName = "A001C002.mov";
        m_host.frameData = Support::frameOf(lens.width, lens.height);
        m_host.frameData->overscan = lens.overscan;
        m_host.shading.reset();
        m_host.distortion.reset();
    }

    void givenDistortion(const LensFrame& lens) {
        givenLens(lens);
        m_host.distortion = Core::DistortionCorrectionParameter{lens.distort, false};
    }

    void givenShading(const LensFrame& lens) {
        givenLens(lens);
        m_host.shading = Core::ShadingCorrectionParameter{lens.addShading, false};
    }

    Image rendered(const Image& input) {
        Image output(input.size(), -1.0f);
        EXPECT_TRUE(m_core.render(input.data(), output.data(), Support::bytes(input)))
            << Support::detailedErrorOf(m_core);
        return output;
    }
};

/// Bilinear sampling in double precision; nothing is outside the frame.
class Sampler {
public:
    Sampler(const Image& image, const LensFrame& frame) : m_image(image), m_frame(frame) {}

    double at(ReferenceLens::Position position, int channel) const {
        const int left = static_cast<int>(std::floor(position.x));
        const int top = static_cast<int>(std::floor(position.y));
        const double x = position.x - left;
        const double y = position.y - top;
        return (1 - x) * (1 - y) * pixel(left, top, channel) + x * (1 - y) * pixel(left + 1, top, channel) +
               (1 - x) * y * pixel(left, top + 1, channel) + x * y * pixel(left + 1, top + 1, channel);
    }

    /// How much the pixels differ that a position within a hundredth of a pixel samples.
    double contrast(ReferenceLens::Position position, int channel) const {
        const auto low = [](double value) { return static_cast<int>(std::floor(value - 0.01)); };
        const auto high = [](double value) { return static_cast<int>(std::ceil(value + 0.01)); };
        double least = pixel(low(position.x), low(position.y), channel);
        double greatest = least;
        for (int y = low(position.y); y <= high(position.y); ++y) {
            for (int x = low(position.x); x <= high(position.x); ++x) {
                least = std::min(least, pixel(x, y, channel));
                greatest = std::max(greatest, pixel(x, y, channel));
            }
        }
        return greatest - least;
    }

private:
    double pixel(int x, int y, int channel) const {
        const int width = static_cast<int>(m_frame.width);
        if (x < 0 || y < 0 || x >= width || y >= static_cast<int>(m_frame.height)) return 0.0;
        return static_cast<double>(m_image[static_cast<std::size_t>((y * width + x) * 4 + channel)]);
    }

    const Image& m_image;
    const LensFrame& m_frame;
};

template <typename Operation>
void forEachValue(const LensFrame& frame, Operation operation) {
    for (unsigned int y = 0; y < frame.height; ++y) {
        for (unsigned int x = 0; x < frame.width; ++x) {
            for (int channel = 0; channel < 4; ++channel) {
                operation(x, y, channel, (std::size_t{y} * frame.width + x) * 4 + static_cast<std::size_t>(channel));
            }
        }
    }
}

constexpr unsigned int lenses = 48;

} // namespace

TEST_F(CoreReferenceTest, RandomLensesGiveTheSameFrameSize) {
    unsigned int grown = 0;
    for (unsigned int seed = 0; seed < 400; ++seed) {
        const LensFrame lens = randomLens(seed);
        givenDistortion(lens);
        unsigned int width = 0;
        unsigned int height = 0;
        ASSERT_TRUE(m_core.frameSize(width, height)) << seed << ": " << Support::detailedErrorOf(m_core);
        const ReferenceLens::Size expected = ReferenceLens(lens).frameSize();
        EXPECT_EQ(width, expected.width) << seed;
        EXPECT_EQ(height, expected.height) << seed;
        if (width > lens.width + 1) ++grown; // one px may be due to the height, which was rounded up
    }
    EXPECT_GT(grown, 100u) << "the lenses are to show growth …";
    EXPECT_LT(grown, 300u) << "… and none";
}

TEST_F(CoreReferenceTest, RandomLensesMoveNoPixelByMoreThanAHundredthOfOne) {
    for (unsigned int seed = 0; seed < lenses; ++seed) {
        const LensFrame lens = randomLens(seed);
        givenDistortion(lens);
        const Image input = Support::noise(lens.width, lens.height, seed);
        const Image output = rendered(input);
        const ReferenceLens reference(lens);
        const Sampler sampler(input, lens);
        double worst = 0.0;
        forEachValue(lens, [&](unsigned int x, unsigned int y, int channel, std::size_t index) {
            const ReferenceLens::Position position = reference.source(x, y);
            // What a shift of 0.01 px may change, and the rounding of the values themselves.
            const double tolerance = 0.01 * sampler.contrast(position, channel) + 1e-4;
            const double difference = std::abs(static_cast<double>(output[index]) - sampler.at(position, channel));
            worst = std::max(worst, difference / tolerance);
        });
        EXPECT_LE(worst, 1.0) << "lens " << seed;
    }
}

TEST_F(CoreReferenceTest, RandomLensesKeepASmoothPicture) {
    for (unsigned int seed = 0; seed < lenses; ++seed) {
        const LensFrame lens = randomLens(seed);
        givenDistortion(lens);
        Image input(std::size_t{lens.width} * lens.height * 4);
        forEachValue(lens, [&](unsigned int x, unsigned int y, int channel, std::size_t index) {
            input[index] =
                static_cast<float>(0.5 + 0.4 * std::sin(0.1 * x + channel) * std::cos(0.07 * y - 0.5 * channel));
        });
        const Image output = rendered(input);
        const ReferenceLens reference(lens);
        const Sampler sampler(input, lens);
        double worst = 0.0;
        forEachValue(lens, [&](unsigned int x, unsigned int y, int channel, std::size_t index) {
            const double expected = sampler.at(reference.source(x, y), channel);
            worst = std::max(worst, std::abs(static_cast<double>(output[index]) - expected));
        });
        EXPECT_LE(worst, 1e-4) << "lens " << seed;
    }
}

TEST_F(CoreReferenceTest, RandomLensesShadeAlike) {
    for (unsigned int seed = 0; seed < lenses; ++seed) {
        const LensFrame lens = randomLens(seed);
        givenShading(lens);
        const Image input = Support::noise(lens.width, lens.height, seed);
        const Image output = rendered(input);
        const ReferenceLens reference(lens);
        double worst = 0.0;
        forEachValue(lens, [&](unsigned int x, unsigned int y, int channel, std::size_t index) {
            const double factor = channel == 3 ? 1.0 : reference.shadingFactor(x, y);
            const double expected = static_cast<double>(input[index]) * factor;
            worst = std::max(worst, std::abs(static_cast<double>(output[index]) - expected));
        });
        EXPECT_LE(worst, 1e-4) << "lens " << seed;
    }
}

TEST_F(CoreReferenceTest, RandomLensesGiveTheSameMultiplyMap) {
    for (unsigned int seed = 0; seed < lenses; ++seed) {
        const LensFrame lens = randomLens(seed);
        givenShading(lens);
        m_host.shading->renderMap = true;
        Image output(std::size_t{lens.width} * lens.height * 4);
        ASSERT_TRUE(m_core.render(nullptr, output.data(), Support::bytes(output))) << Support::detailedErrorOf(m_core);
        const ReferenceLens reference(lens);
        double worst = 0.0;
        forEachValue(lens, [&](unsigned int x, unsigned int y, int channel, std::size_t index) {
            const double expected = channel == 3 ? 1.0 : reference.shadingFactor(x, y);
            worst = std::max(worst, std::abs(static_cast<double>(output[index]) - expected));
        });
        EXPECT_LE(worst, 1e-4) << "lens " << seed;
    }
}
