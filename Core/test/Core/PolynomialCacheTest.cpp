#include "Core/PolynomialCache.h"

#include <gtest/gtest.h>

#include <thread>

#include "CorrectionData/Calculations/CoefficentCalculationFailedException.h"

using CorrectionData::Frame;

namespace {

Frame frameWithShadingAtTheEdge(float shading) {
    Frame frame;
    frame.heights = {0.0f, 5.0f, 10.0f, 15.0f, 18.0f, 21.4f};
    frame.shading = {100.0f, 98.0f, 93.0f, 84.0f, 77.0f, shading};
    frame.radialDistortion = {0.0f, 1.0f, 4.0f, 9.0f, 13.0f, shading / 5.0f};
    return frame;
}

} // namespace

TEST(PolynomialCache, GivesTheFitOfEveryRecord) {
    Core::PolynomialCache cache;
    for (const int round : {0, 1}) {
        for (int i = 0; i < 200; ++i) {
            const Frame frame = frameWithShadingAtTheEdge(50.0f + static_cast<float>(i) / 10.0f);
            ASSERT_EQ(cache.shading(frame).coefficients, Core::shadingPolynomial(frame).coefficients) << round;
            ASSERT_EQ(cache.distortion(frame).distorted.coefficients,
                      Core::distortionPolynomials(frame).distorted.coefficients);
            ASSERT_EQ(cache.distortion(frame).undistorted.coefficients,
                      Core::distortionPolynomials(frame).undistorted.coefficients);
        }
    }
}

TEST(PolynomialCache, FailsEveryTimeForARecordWithoutAFit) {
    Core::PolynomialCache cache;
    Frame frame = frameWithShadingAtTheEdge(70.0f);
    frame.heights[3] = frame.heights[2];
    for (const int round : {0, 1}) {
        EXPECT_THROW(cache.shading(frame), CorrectionData::CoefficentCalculationFailedException) << round;
    }
}

TEST(PolynomialCache, ServesSeveralThreads) {
    Core::PolynomialCache cache;
    std::vector<std::thread> threads;
    std::vector<int> wrong(4);
    for (int& count : wrong) {
        threads.emplace_back([&cache, &count] {
            for (int i = 0; i < 300; ++i) {
                const Frame frame = frameWithShadingAtTheEdge(50.0f + static_cast<float>(i % 100) / 10.0f);
                if (cache.shading(frame).coefficients != Core::shadingPolynomial(frame).coefficients) ++count;
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(wrong, std::vector<int>(4, 0));
}
