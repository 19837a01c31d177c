#include "Chain/FramePlan.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>

#include "Chain/RadialSampling.h"
#include "Chain/Support/RandomPicture.h"
#include "Core/AspectRatio.h"
#include "Exception/Exception.h"
#include "FrameSizing.h"

using DD::Image::Box;
using Tools::FramePlan;
using Tools::Steps;

namespace {

FramePlan planned(const RandomPicture& picture) {
    Core::FramePreparation preparation(std::make_unique<RandomPictureSource>(picture));
    return Tools::planFrame(picture.shape, picture.steps, preparation);
}

/// 1920 × 1080, of a lens with the given ‰ at its seven heights.
RandomPicture hd(const std::string& distortion, const Box& data, bool isInverse = false) {
    std::mt19937 random(1);
    RandomPicture picture(random, 64);
    picture.clip = picture.shape.format = {1920, 1080};
    picture.shape.data = data;
    picture.shape.overscan.reset();
    picture.steps = Steps::Distortion;
    picture.isInverse = isInverse;
    picture.record = R"({"recordingFormat": {"camera": {"manufacturer": "", "model": ""},
        "clipResolution": {"width": 1920, "height": 1080}, "imageRadius": 14.5},
        "frameData": {"interpolationPoints": {"heights": [0, 3, 6, 9, 11, 13, 15],
        "shading": [100, 99, 96, 92, 88, 84, 80], "radialDistortion": [)" +
                     distortion + "]}}}";
    return picture;
}

/// The picture in a half, a third or a quarter of the recording's size, rounded either way, with up to half of it
/// beyond each side.
RandomPicture proxyOf(RandomPicture picture, std::mt19937& random) {
    const auto whole = [&](int from, int to) { return std::uniform_int_distribution<>(from, to)(random); };
    const int divisor = whole(2, 4);
    const auto divided = [&](std::uint32_t length) {
        return (static_cast<int>(length) + (whole(0, 1) == 0 ? 0 : divisor - 1)) / divisor;
    };
    const int width = divided(picture.clip.width), height = divided(picture.clip.height);
    picture.shape.format = {static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height)};
    const auto overscan = [&](int length) { return whole(0, 2) == 0 ? 0 : whole(0, length / 2); };
    picture.shape.data = Box(-overscan(width), -overscan(height), width + overscan(width), height + overscan(height));
    return picture;
}

constexpr const char* barrel = "0, -1.2, -4.8, -11, -19, -28, -40";
constexpr const char* pincushion = "0, 0.9, 3.6, 8, 14, 21, 29";
constexpr const char* straight = "0, 0, 0, 0, 0, 0, 0";
const Box format(0, 0, 1920, 1080);
const Box crop(301, 200, 1002, 703);

} // namespace

TEST(FramePlan, FindsABoxThatTheCoreAcceptsForAnyDataWindowFormatAndLens) {
    std::mt19937 random(20);
    for (int i = 0; i < 10000; ++i) {
        const RandomPicture picture(random, 8192);
        ASSERT_TRUE(planned(picture).isAccepted) << i << ": " << picture.string();
    }
}

TEST(FramePlan, RefusesAProxyOnlyIfItsRoundedFormatIsOffWhereItsOverscanEnds) {
    std::mt19937 random(24);
    const auto ratio = [](Tools::PixelSize size) { return static_cast<double>(size.height) / size.width; };
    int plannedCount = 0, refused = 0;
    for (int i = 0; i < 2000; ++i) {
        const RandomPicture picture = proxyOf(RandomPicture(random, 8192), random);
        try {
            const FramePlan plan = planned(picture);
            ++plannedCount;
            if (plan.isAccepted) continue;
            ++refused;
            const Core::AspectRatio recorded(plan.frame.recordingFormat);
            ASSERT_FALSE(recorded.isThatOf(static_cast<std::uint32_t>(plan.refused.w()),
                                           static_cast<std::uint32_t>(plan.refused.h())))
                << i << ": " << picture.string();
            // Within half a pixel, whole pixels can be chosen to fit.
            const double error = plan.refused.w() * (ratio(picture.shape.format) - ratio(picture.clip));
            ASSERT_GT(std::abs(error), 0.5) << i << ": " << picture.string();
        } catch (const std::exception&) {
            // A format that the core itself refuses, or a lens that bends so much overscan to nowhere.
        }
    }
    EXPECT_GT(plannedCount, 1900);
    EXPECT_GT(refused, 0);
    EXPECT_LT(refused, 40);
}

TEST(FramePlan, SaysOfARefusedProxyWhatIsOffAndWhatToDo) {
    RandomPicture picture = hd(barrel, Box(-49, 0, 99, 59));
    picture.steps = Steps::ShadingThenDistortion;
    picture.record.replace(picture.record.find("\"width\": 1920, \"height\": 1080"), 29,
                           "\"width\": 198, \"height\": 119");
    picture.clip = {198, 119};
    picture.shape.format = {99, 59};
    const FramePlan plan = planned(picture);
    ASSERT_FALSE(plan.isAccepted);
    EXPECT_EQ(Tools::shapeRefusal(plan, picture.shape),
              "The picture's format of 99 x 59 px has the recording's aspect ratio (198 x 119 px) only roughly, and in "
              "the frame around its data window (197 x 117 px) the error is 2 px or more. Render the picture at the "
              "recording's size or an exact fraction of it, or crop its overscan.");
}

TEST(FramePlan, GivesMostPicturesNoBorder) {
    std::mt19937 random(21);
    int bordered = 0;
    for (int i = 0; i < 1000; ++i) {
        const RandomPicture picture(random, 8192);
        if (planned(picture).shown != picture.shape.whole()) ++bordered;
    }
    EXPECT_GT(bordered, 0);
    EXPECT_LT(bordered, 150);
}

TEST(FramePlan, GivesAPictureTheBorderOfTheSmallestFrameThatTheCoreAccepts) {
    std::mt19937 random(25);
    int bordered = 0;
    for (int i = 0; i < 100; ++i) {
        RandomPicture picture(random, 8192);
        const auto frameOf = [&](const Box& box) {
            return FrameSizing::frameAround(box, picture.shape.formatBox()).width;
        };
        const Box whole = picture.shape.whole();
        const Box shown = planned(picture).shown;
        if (shown == whole) continue;
        ++bordered;
        for (const bool isWider : {true, false}) {
            Box smaller = whole;
            for (;;) {
                smaller.pad(isWider ? 1 : 0, isWider ? 0 : 1);
                if (frameOf(smaller) >= frameOf(shown)) break;
                picture.shape.data = smaller;
                ASSERT_NE(planned(picture).shown, smaller) << i << ": " << picture.string();
            }
        }
    }
    EXPECT_GT(bordered, 2);
}

TEST(FramePlan, HasOneBoxForTheWholePictureAndForACropOfIt) {
    EXPECT_EQ(planned(hd(barrel, crop)).box, planned(hd(barrel, format)).box);
    EXPECT_EQ(planned(hd(pincushion, crop, true)).box, planned(hd(pincushion, format, true)).box);
}

TEST(FramePlan, HasOneBoxForAPictureWithOverscanAndForACropThatReachesAsFar) {
    const Box overscan(-96, -54, 2016, 1134);
    EXPECT_EQ(planned(hd(barrel, Box(-96, 400, 30, 500))).box, planned(hd(barrel, overscan)).box);
}

TEST(FramePlan, KeepsTheDataWindowWhereNothingMoves) {
    for (const Box& data : {format, crop, Box(-96, -10, 1900, 1081), Box(2000, 5, 2010, 7)}) {
        for (const bool isInverse : {false, true}) {
            RandomPicture picture = hd(straight, data, isInverse);
            EXPECT_EQ(planned(picture).kept, data);
            picture.steps = isInverse ? Steps::DistortionThenShading : Steps::ShadingThenDistortion;
            EXPECT_EQ(planned(picture).kept, data);
        }
    }
}

TEST(FramePlan, KeepsTheDataWindowWhereOnlyShadingIsCorrected) {
    RandomPicture picture = hd(barrel, Box(-96, -10, 1900, 1081));
    picture.steps = Steps::Shading;
    EXPECT_EQ(planned(picture).kept, picture.shape.data);
}

TEST(FramePlan, KeepsTheDataWindowWhereThePictureOnlyShrinks) {
    EXPECT_EQ(planned(hd(pincushion, format)).kept, format);
    EXPECT_EQ(planned(hd(barrel, format, true)).kept, format);
}

TEST(FramePlan, KeepsAllThatIsRenderedFromTheDataWindowAndLittleElse) {
    std::mt19937 random(22);
    for (int i = 0; i < 300; ++i) {
        const RandomPicture picture(random, 160);
        const FramePlan plan = planned(picture);
        if (!plan.distortion) continue; // nothing moves
        const Tools::RadialSampling sampling = Tools::RadialSampling::rendered(*plan.distortion);
        const double centreX = picture.shape.format.width / 2.0 - 0.5;
        const double centreY = picture.shape.format.height / 2.0 - 0.5;
        const Box& data = picture.shape.data;
        Box filled = data;
        for (int y = plan.box.y(); y < plan.box.t(); ++y) {
            for (int x = plan.box.x(); x < plan.box.r(); ++x) {
                const double factor = sampling.factor(std::hypot(x - centreX, y - centreY));
                const double sourceX = centreX + (x - centreX) * factor;
                const double sourceY = centreY + (y - centreY) * factor;
                // The border pixels' share in this one; less than 1/64 of them may be lost.
                const double share = std::min(
                    {sourceX - (data.x() - 1), data.r() - sourceX, sourceY - (data.y() - 1), data.t() - sourceY});
                if (share > 1.0 / 64.0) filled.merge(Box(x, y, x + 1, y + 1));
            }
        }
        ASSERT_TRUE(plan.kept.contains(filled)) << i << ": " << picture.string();
        // A side is bowed, so its outermost place may lie between two pixels.
        Box larger = filled;
        larger.pad(1);
        ASSERT_TRUE(larger.contains(plan.kept)) << i << ": " << picture.string();
    }
}

TEST(FramePlan, LeavesAPictureThatIsNotTheRecordingsToTheCore) {
    RandomPicture picture = hd(barrel, format);
    picture.shape.format = {1920, 1082};
    EXPECT_THROW(planned(picture), Exception);
}
