#include "Map/MapPicture.h"

#include <gtest/gtest.h>

#include <array>

#include "Support/FailureText.h"

using Tools::MapConvention;
using Values = std::pair<float, float>;
using Tools::FrameGeometry;
using Tools::MapContent;
using Pixel = std::array<float, 4>;

namespace {

constexpr Image::Window format{0, 0, 199, 99}; // 200 × 100 px

MapConvention convention(MapConvention::Origin origin, MapConvention::Centre centre) {
    MapConvention convention;
    convention.origin = origin;
    convention.centre = centre;
    return convention;
}

} // namespace

TEST(MapConvention, RunsFromEdgeToEdgeAndUpwards) {
    EXPECT_EQ(MapConvention().values(format, {-0.5, 99.5}), Values(0.0f, 0.0f));
    EXPECT_EQ(MapConvention().values(format, {199.5, -0.5}), Values(1.0f, 1.0f));
}

TEST(MapConvention, HasTheHalfPixelInTheFirstPixel) {
    EXPECT_EQ(MapConvention().values(format, {0, 0}), Values(0.0025f, 0.995f));
}

TEST(MapConvention, KeepsPlacesOutsideThePicture) {
    EXPECT_EQ(MapConvention().values(format, {-100.5, 199.5}), Values(-0.5f, -1.0f));
}

TEST(MapConvention, MeasuresFromTheDisplayWindow) {
    EXPECT_EQ(MapConvention().values({1000, -50, 1199, 49}, {1099.5, -0.5}), Values(0.5f, 0.5f));
}

TEST(MapConvention, RunsDownwardsOnRequest) {
    EXPECT_EQ(convention(MapConvention::Origin::Top, MapConvention::Centre::Half).values(format, {0, 0}),
              Values(0.0025f, 0.005f));
}

TEST(MapConvention, LeavesTheHalfPixelOutOnRequest) {
    EXPECT_EQ(convention(MapConvention::Origin::Bottom, MapConvention::Centre::None).values(format, {20, 20}),
              Values(0.1f, 0.8f));
}

TEST(MapConvention, RunsFromPixelCentreToPixelCentreOnRequest) {
    const MapConvention corner = convention(MapConvention::Origin::Bottom, MapConvention::Centre::Corner);
    EXPECT_EQ(corner.values(format, {0, 0}), Values(0.0f, 1.0f));
    EXPECT_EQ(corner.values(format, {199, 99}), Values(1.0f, 0.0f));
}

TEST(MapConvention, WritesItsFormula) {
    EXPECT_EQ(MapConvention().formula(format), "R = (sx + 0.5) / 200, G = 1 - (sy + 0.5) / 100, B = 0, A = 1");
    MapConvention other = convention(MapConvention::Origin::Top, MapConvention::Centre::Corner);
    other.channels = MapConvention::Channels::Twice;
    EXPECT_EQ(other.formula(format), "R = sx / 199, G = sy / 99, B = sx / 199, A = sy / 99");
}

TEST(MapConvention, RefusesPixelCentresOfAPictureWithOneColumn) {
    const MapConvention corner = convention(MapConvention::Origin::Bottom, MapConvention::Centre::Corner);
    EXPECT_EQ(failureOf([&] {
                  corner.check({0, 0, 0, 99});
              }),
              "wrong use: --centre corner divides by the side less 1 px, which is 0 for a picture of 1 x 100 px; "
              "choose another.");
}

namespace {

/// 4 × 2 px in a box that reaches a pixel further on each side; the curve multiplies all distances by `factor`.
FrameGeometry geometry(float factor) {
    FrameGeometry geometry;
    geometry.format = {0, 0, 3, 1};
    geometry.box = {-1, -1, 4, 2};
    geometry.pixelAspectRatio = 2.0f;
    geometry.node.currentWidth = 6;
    geometry.node.currentHeight = 4;
    geometry.node.imageRadius = 10.0f;
    geometry.node.a1 = factor;
    geometry.idealMillimetresPerPixel = 1.0;
    return geometry;
}

Pixel pixel(const Image::Frame& picture, std::size_t x, std::size_t y) {
    const Image::Plane& plane = picture.parts[0].planes[0];
    std::vector<float> row(plane.width * 4);
    plane.rowToFloat(y, row.data());
    return {row[x * 4], row[x * 4 + 1], row[x * 4 + 2], row[x * 4 + 3]};
}

} // namespace

TEST(MapPicture, OfNoDistortionIsTheIdentityOverTheWholeBox) {
    const Image::Frame picture = mapPicture({}, geometry(1.0f), {}, 1);
    EXPECT_EQ(pixel(picture, 0, 0), (Pixel{-0.125f, 1.25f, 0.0f, 1.0f}));
    EXPECT_EQ(pixel(picture, 5, 3), (Pixel{1.125f, -0.25f, 0.0f, 1.0f}));
}

TEST(MapPicture, HoldsThePlaceToReadNotThePlaceToGoTo) {
    // The centre is at (1.5, 0.5); the pixel at (3, 1) reads at (1.5 + 3, 0.5 + 1).
    EXPECT_EQ(pixel(mapPicture({}, geometry(2.0f), {}, 1), 4, 2), (Pixel{5.0f / 4.0f, 0.0f, 0.0f, 1.0f}));
}

TEST(MapPicture, HasTheBoxAsDataWindowAndTheFormatAsDisplayWindow) {
    const Image::Frame picture = mapPicture({}, geometry(1.0f), {}, 1);
    EXPECT_EQ(picture.parts[0].dataWindow, (Image::Window{-1, -1, 4, 2}));
    EXPECT_EQ(picture.parts[0].displayWindow, (Image::Window{0, 0, 3, 1}));
    EXPECT_EQ(picture.parts[0].pixelAspectRatio, 2.0f);
}

TEST(MapPicture, RepeatsItselfInBlueAndAlphaOnRequest) {
    MapContent content;
    content.convention.channels = MapConvention::Channels::Twice;
    EXPECT_EQ(pixel(mapPicture(content, geometry(1.0f), {}, 1), 0, 0), (Pixel{-0.125f, 1.25f, -0.125f, 1.25f}));
}

TEST(MapPicture, HoldsTheOppositeDirectionInBlueAndAlphaOnRequest) {
    MapContent content;
    content.convention.channels = MapConvention::Channels::Both;
    EXPECT_EQ(pixel(mapPicture(content, geometry(1.0f), geometry(2.0f), 1), 4, 2),
              (Pixel{3.5f / 4.0f, 0.25f, 5.0f / 4.0f, 0.0f}));
}

TEST(MapPicture, SaysWhatItHolds) {
    MapContent content;
    content.direction = Tools::Direction::Redistort;
    content.geometry = Tools::Geometry::Ideal;
    const Image::Frame picture = mapPicture(content, geometry(1.0f), {}, 1);
    const auto text = [&](const char* key) {
        return picture.parts[0].text(std::string("com.orvex.lenscorrect.map.") + key);
    };
    EXPECT_EQ(text("direction"), "redistort");
    EXPECT_EQ(text("geometry"), "ideal");
    EXPECT_EQ(text("origin"), "bottom");
    EXPECT_EQ(text("centre"), "half");
    EXPECT_EQ(text("channels"), "single");
    EXPECT_EQ(text("formula"), "R = (sx + 0.5) / 4, G = 1 - (sy + 0.5) / 2, B = 0, A = 1");
}

TEST(MapPicture, IsTheSameOnAnyNumberOfThreads) {
    const Image::Frame one = mapPicture({}, geometry(1.5f), {}, 1);
    const Image::Frame three = mapPicture({}, geometry(1.5f), {}, 3);
    for (std::size_t y = 0; y < 4; ++y) {
        for (std::size_t x = 0; x < 6; ++x) EXPECT_EQ(pixel(one, x, y), pixel(three, x, y));
    }
}
