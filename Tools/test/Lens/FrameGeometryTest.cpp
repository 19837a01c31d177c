#include "Lens/FrameGeometry.h"

#include <gtest/gtest.h>

using Tools::FrameGeometry;
using Tools::Geometry;
using Tools::RecordedFrame;

TEST(RecordedFrame, LaysTheImageRadiusOverTheHalfDiagonal) {
    RecordingFormatDatabase::RecordingFormat format;
    format.imageRadius = 10.0f;
    EXPECT_EQ(10.0 / 500.0, RecordedFrame({600, 800}).millimetresPerPixel(format));
}

TEST(RecordedFrame, IsWhatRemainsOfAFormatWithOverscanInsideInWholePixels) {
    // 10 % of 661 × 881 px: 600.9 × 800.9.
    EXPECT_EQ(RecordedFrame({601, 801}).halfDiagonal, RecordedFrame({661, 881}, 10.0f).halfDiagonal);
}

namespace {

/// A format of 600 × 800 px whose first pixel is at (10, 20), where 500 px are 10 mm; nothing is distorted.
FrameGeometry geometry() {
    FrameGeometry geometry;
    geometry.format = {10, 20, 609, 819};
    geometry.box = geometry.format;
    geometry.node.currentWidth = 600;
    geometry.node.currentHeight = 800;
    geometry.node.imageRadius = 10.0f;
    geometry.node.a1 = 1.0f;
    geometry.idealMillimetresPerPixel = 0.02;
    return geometry;
}

FrameGeometry distorted() {
    FrameGeometry result = geometry();
    result.node.a3 = 0.0001f;
    return result;
}

} // namespace

TEST(FrameGeometry, MeasuresFromTheCentreOfTheFormat) {
    EXPECT_EQ(geometry().centre().x, 309.5);
    EXPECT_EQ(geometry().centre().y, 419.5);
}

TEST(FrameGeometry, MovesPlacesOnTheRayThroughTheCentre) {
    const FrameGeometry frame = distorted();
    const Tools::Place source = frame.source(frame.sampling(Geometry::Node), {309.5 + 300, 419.5 - 400});
    EXPECT_NEAR(source.x, 309.5 + 303, 1e-6);
    EXPECT_NEAR(source.y, 419.5 - 404, 1e-6);
}

TEST(FrameGeometry, DoesNotDeviateWhereTheCornerStandsForTheCorner) { EXPECT_NEAR(distorted().deviation(), 0.0, 1e-9); }

TEST(FrameGeometry, DeviatesWhereTheHalfDiagonalStandsForAnotherRadius) {
    FrameGeometry frame = distorted();
    frame.node.imageRadius = 9.0f;
    // At 0.018 mm per px instead of 0.02 the corner is moved by 0.81 × 5 px instead of 5 px.
    EXPECT_NEAR(frame.deviation(), 0.95, 1e-6);
}

TEST(FrameGeometry, KnowsTheSameMap) { EXPECT_TRUE(distorted().isSameMap(distorted())); }

TEST(FrameGeometry, TellsMapsOfDifferentLensesApart) { EXPECT_FALSE(distorted().isSameMap(geometry())); }

TEST(FrameGeometry, TellsMapsOfDifferentBoxesApart) {
    FrameGeometry other = geometry();
    other.box.maxX += 1;
    other.box.minX -= 1;
    EXPECT_FALSE(other.isSameMap(geometry()));
}
