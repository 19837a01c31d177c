#include <gtest/gtest.h>

#include <cmath>

#include "Core/Core.h"
#include "Core/FakeCoreDataSource.h"
#include "Core/Image.h"
#include "Sample/SampleClip.h"
#include "Support/OpenCLDevice.h"
#include "Support/TemporaryFolder.h"

using Pixels = Support::Image;
using Tools::PixelSize;
using Tools::SampleClip;

namespace {

/// The sample clip's plate corrected by the core, as two nodes one after the other would do it.
class SampleCorrection : public testing::TestWithParam<PixelSize> {
protected:
    void SetUp() override {
        if (!openCLDeviceExists()) GTEST_SKIP() << "no OpenCL device here";
    }

    /// RGBA of width × height in the middle of grown × grown; what is outside is black, or cut off.
    static Pixels centred(const Pixels& image, PixelSize from, PixelSize to) {
        Pixels result(std::size_t{to.width} * to.height * 4);
        const int dx = (int(to.width) - int(from.width)) / 2, dy = (int(to.height) - int(from.height)) / 2;
        for (int y = 0; y < int(to.height); ++y) {
            for (int x = 0; x < int(to.width); ++x) {
                const int sx = x - dx, sy = y - dy;
                if (sx < 0 || sy < 0 || sx >= int(from.width) || sy >= int(from.height)) continue;
                for (int channel = 0; channel < 4; ++channel) {
                    result[(std::size_t(y) * to.width + std::size_t(x)) * 4 + std::size_t(channel)] =
                        image[(std::size_t(sy) * from.width + std::size_t(sx)) * 4 + std::size_t(channel)];
                }
            }
        }
        return result;
    }

    static Pixels withAlpha(const std::vector<float>& colors) {
        Pixels image;
        for (std::size_t pixel = 0; pixel < colors.size(); pixel += 3) {
            image.insert(image.end(), {colors[pixel], colors[pixel + 1], colors[pixel + 2], 1.0f});
        }
        return image;
    }

    static Support::HostFrame hostFrame(const std::string& file, const SampleClip& clip, std::int32_t index,
                                        PixelSize size) {
        Support::HostFrame frame;
        frame.correctionFilePath = file;
        frame.clipFileName = "plate";
        frame.frameData = Support::frameOf(size.width, size.height);
        clip.timecode(index).copy(frame.frameData->timecode, 15);
        return frame;
    }
};

} // namespace

TEST_P(SampleCorrection, MeetsTheCleanReferenceWithinTheStatedBound) {
    const PixelSize size = GetParam();
    const SampleClip clip(size, 3);
    Support::TemporaryFolder folder;
    const std::string file = folder.write("plate.olcf", clip.correctionFile());
    constexpr std::int32_t index = 1;

    Support::HostFrame shadingFrame = hostFrame(file, clip, index, size);
    shadingFrame.shading = Core::ShadingCorrectionParameter{};
    Core::Core shading(std::make_unique<Support::FakeCoreDataSource>(shadingFrame));
    const Pixels plate = withAlpha(clip.plate(index));
    Pixels even(plate.size());
    ASSERT_TRUE(shading.render(plate.data(), even.data(), Support::bytes(even))) << Support::detailedErrorOf(shading);

    Support::HostFrame distortionFrame = hostFrame(file, clip, index, size);
    distortionFrame.distortion = Core::DistortionCorrectionParameter{};
    Core::Core distortion(std::make_unique<Support::FakeCoreDataSource>(distortionFrame));
    unsigned int width = 0, height = 0;
    ASSERT_TRUE(distortion.frameSize(width, height)) << Support::detailedErrorOf(distortion);
    // The node grows the frame on both sides alike.
    const PixelSize grown{size.width + 2 * std::uint32_t(std::round((width - size.width) * 0.5)),
                          size.height + 2 * std::uint32_t(std::round((height - size.height) * 0.5))};
    distortionFrame.frameData->width = grown.width;
    distortionFrame.frameData->height = grown.height;
    const Pixels source = centred(even, size, grown);
    Pixels corrected(source.size());
    ASSERT_TRUE(distortion.render(source.data(), corrected.data(), Support::bytes(source)))
        << Support::detailedErrorOf(distortion);

    const Pixels result = centred(corrected, grown, size);
    const Pixels clean = withAlpha(clip.clean(index));
    double worst = 0.0;
    for (std::uint32_t y = 2; y < size.height - 2; ++y) {
        for (std::size_t sample = (std::size_t{y} * size.width + 2) * 4;
             sample < (std::size_t{y + 1} * size.width - 2) * 4; ++sample) {
            worst = std::max(worst, std::abs(double(result[sample]) - double(clean[sample])));
        }
    }
    EXPECT_LE(worst, clip.errorBound().total);
    EXPECT_GT(worst, 0.1 * clip.errorBound().total) << "the bound says little";
}

INSTANTIATE_TEST_SUITE_P(Sizes, SampleCorrection,
                         testing::Values(PixelSize{320, 180}, PixelSize{640, 360}, PixelSize{480, 360}),
                         [](const auto& size) {
                             return std::to_string(size.param.width) + "x" + std::to_string(size.param.height);
                         });
