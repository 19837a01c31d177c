#include "CorrectionData/Calculations/Calculations.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

#include "Support/CommaLocale.h"

using CorrectionData::Calculations;
using CorrectionData::CoefficentCalculationFailedException;
using testing::ElementsAre;
using testing::SizeIs;

namespace {

using Values = std::vector<float>;

Values fit(const Values& x, const Values& y) {
    Values coefficients;
    Calculations::calculateCoefficients(x, y, coefficients);
    return coefficients;
}

double valueAt(const Values& coefficients, double x) {
    double value = 0.0;
    for (std::size_t i = coefficients.size(); i-- > 0;) value = value * x + static_cast<double>(coefficients[i]);
    return value;
}

// A coefficient is rounded to float, so each term may be off by half a unit in the last place of 24 bits.
double toleranceAt(const Values& coefficients, double x) {
    double sum = 0.0;
    for (std::size_t i = 0; i < coefficients.size(); ++i) {
        sum += std::abs(static_cast<double>(coefficients[i])) * std::pow(std::abs(x), static_cast<double>(i));
    }
    return sum * std::ldexp(1.0, -23);
}

void expectFails(const Values& x, const Values& y) {
    Values coefficients = {42.0f};
    EXPECT_THROW(Calculations::calculateCoefficients(x, y, coefficients), CoefficentCalculationFailedException);
    EXPECT_THAT(coefficients, ElementsAre(42.0f)) << "nothing is appended on failure";
}

const Values sixHeights = {0.0f, 5.0f, 10.0f, 15.0f, 18.0f, 21.4f};
const Values sixShadings = {100.0f, 98.5f, 93.25f, 84.0f, 76.5f, 66.0f};
constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();
constexpr float infinity = std::numeric_limits<float>::infinity();

} // namespace

TEST(Calculations, LaysAQuinticThroughSixPoints) {
    const Values coefficients = fit(sixHeights, sixShadings);
    ASSERT_THAT(coefficients, SizeIs(6));
    for (std::size_t i = 0; i < sixHeights.size(); ++i) {
        const double x = static_cast<double>(sixHeights[i]);
        EXPECT_NEAR(valueAt(coefficients, x), static_cast<double>(sixShadings[i]), toleranceAt(coefficients, x));
    }
}

TEST(Calculations, LaysASexticThroughSevenPoints) {
    const Values x = {0.0f, 3.5f, 7.0f, 10.5f, 14.0f, 17.5f, 21.0f};
    const Values y = {100.0f, 99.0f, 96.0f, 91.5f, 85.0f, 76.0f, 66.0f};
    const Values coefficients = fit(x, y);
    ASSERT_THAT(coefficients, SizeIs(7));
    for (std::size_t i = 0; i < x.size(); ++i) {
        const double height = static_cast<double>(x[i]);
        EXPECT_NEAR(valueAt(coefficients, height), static_cast<double>(y[i]), toleranceAt(coefficients, height));
    }
}

TEST(Calculations, GivesTheConstantCoefficientFirst) {
    EXPECT_THAT(
        fit({0.0f, 1.0f, 2.0f}, {1.0f, 2.0f, 5.0f}),
        ElementsAre(testing::FloatNear(1.0f, 1e-6f), testing::FloatNear(0.0f, 1e-6f), testing::FloatNear(1.0f, 1e-6f)))
        << "a few roundings of numbers below 10 in double precision";
}

TEST(Calculations, DropsTheFirstOfSevenPointsWhenTheFirstTwoHeightsAreEqual) {
    EXPECT_EQ(fit({0.0f, 0.0f, 5.0f, 10.0f, 15.0f, 18.0f, 21.4f}, {1.0f, 100.0f, 98.5f, 93.25f, 84.0f, 76.5f, 66.0f}),
              fit(sixHeights, sixShadings));
}

TEST(Calculations, KeepsTheFirstOfSevenPointsWhenTheFirstTwoHeightsNearlyCoincide) {
    EXPECT_THAT(fit({1.0f, std::nextafter(1.0f, 2.0f), 5.0f, 10.0f, 15.0f, 18.0f, 21.4f}, Values(7, 1.0f)), SizeIs(7));
}

TEST(Calculations, AppendsToTheOutput) {
    Values coefficients = {42.0f};
    Calculations::calculateCoefficients({1.0f}, {3.0f}, coefficients);
    EXPECT_THAT(coefficients, ElementsAre(42.0f, 3.0f));
}

TEST(Calculations, FailsForTwoEqualHeightsElsewhereAndNamesBothLists) {
    try {
        fit({0.0f, 5.0f, 10.5f, 10.5f, 15.0f, 18.0f, 21.4f}, {100.0f, 99.0f, 98.0f, 97.0f, 96.0f, 95.0f, 94.25f});
        FAIL();
    } catch (const CoefficentCalculationFailedException& exception) {
        EXPECT_EQ(exception.detailedDescription(),
                  "Calculation of the polynomial coefficients did fail.\n"
                  "X Vector: 0 5 10.5 10.5 15 18 21.4\nY Vector: 100 99 98 97 96 95 94.25\n");
    }
}

TEST(Calculations, NamesTheListsAsTheyWerePassedWithTheDroppedPoint) {
    try {
        fit({0.0f, 0.0f, 5.0f, 5.0f, 15.0f, 18.0f, 21.4f}, {1.0f, 2.0f, 3.0f, 4.0f, 5.0f, 6.0f, 7.0f});
        FAIL();
    } catch (const CoefficentCalculationFailedException& exception) {
        EXPECT_EQ(exception.detailedDescription(),
                  "Calculation of the polynomial coefficients did fail.\n"
                  "X Vector: 0 0 5 5 15 18 21.4\nY Vector: 1 2 3 4 5 6 7\n");
    }
}

TEST(Calculations, WritesTheListsWhateverTheGlobalLocale) {
    const Support::CommaLocale comma;
    try {
        fit({1000.5f, 1000.5f}, {1.0f, 2.0f});
        FAIL();
    } catch (const CoefficentCalculationFailedException& exception) {
        EXPECT_EQ(exception.detailedDescription(),
                  "Calculation of the polynomial coefficients did fail.\nX Vector: 1000.5 1000.5\nY Vector: 1 2\n");
    }
}

TEST(Calculations, FailsForEqualFirstHeightsOfSixPoints) {
    expectFails({0.0f, 0.0f, 10.0f, 15.0f, 18.0f, 21.4f}, sixShadings);
}

TEST(Calculations, FailsForEqualFirstHeightsOfEightPoints) {
    expectFails({0.0f, 0.0f, 5.0f, 10.0f, 12.0f, 15.0f, 18.0f, 21.4f}, Values(8, 1.0f));
}

// LAPACK itself reports only a part of these.
TEST(Calculations, FailsForAnyPairOfEqualHeights) {
    std::mt19937 random(20240607);
    std::uniform_real_distribution<float> height(0.0f, 30.0f);
    for (int round = 0; round < 2000; ++round) {
        const std::size_t count = round % 2 == 0 ? 6 : 7;
        Values x(count);
        for (float& value : x) value = height(random);
        const std::size_t first = random() % count;
        const std::size_t second = (first + 1 + random() % (count - 1)) % count;
        x[first] = x[second];
        if (count == 7 && x[0] == x[1]) continue;
        ASSERT_THROW(fit(x, Values(count, 1.0f)), CoefficentCalculationFailedException) << round;
    }
}

TEST(Calculations, FailsForThreeEqualFirstHeightsOfSevenPoints) {
    expectFails({0.0f, 0.0f, 0.0f, 10.0f, 15.0f, 18.0f, 21.4f}, Values(7, 1.0f));
}

TEST(Calculations, TakesZeroAndMinusZeroForEqual) { expectFails({0.0f, -0.0f, 1.0f}, {1.0f, 2.0f, 3.0f}); }

TEST(Calculations, FailsForHeightsThatAreNotFinite) {
    for (const float value : {notANumber, infinity, -infinity}) {
        expectFails({0.0f, 5.0f, value, 15.0f, 18.0f, 21.4f}, sixShadings);
    }
}

TEST(Calculations, FailsForValuesThatAreNotFinite) {
    for (const float value : {notANumber, infinity, -infinity}) {
        expectFails(sixHeights, {100.0f, 99.0f, value, 97.0f, 96.0f, 95.0f});
    }
}

TEST(Calculations, FailsWhenACoefficientExceedsSinglePrecision) { expectFails({1e-38f, 2e-38f}, {0.0f, 1e30f}); }

TEST(Calculations, FailsForNoPointsAtAll) { expectFails({}, {}); }

TEST(Calculations, LaysAPolynomialThroughHeightsThatNearlyCoincide) {
    const float close = std::nextafter(5.0f, 6.0f);
    EXPECT_THAT(fit({0.0f, 5.0f, close, 15.0f, 18.0f, 21.4f}, sixShadings), SizeIs(6));
}

TEST(CalculationsDeathTest, StopsOnListsOfUnequalLength) {
    EXPECT_DEATH(fit({0.0f, 1.0f}, {1.0f}), "xVector.size\\(\\) == yVector.size\\(\\)");
}
