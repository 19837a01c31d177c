#include "Map/MapConvention.h"

#include <gtest/gtest.h>

#include "Support/FailureText.h"

using Tools::MapConvention;
using Values = std::pair<float, float>;

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
