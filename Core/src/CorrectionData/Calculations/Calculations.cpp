// The fit solves V·c = y, where row i of the Vandermonde matrix V holds the powers x_i⁰ … x_iⁿ⁻¹. V is inverted by its
// LU factors and multiplied by y; at most 7 points in practice, in double precision, so that is exact enough.
//
// LAPACK finds most singular systems regular, because rounding leaves the last pivot a little off zero, and it computes
// through infinities silently. So equal abscissae and values that are not finite are looked for here.

#include "CorrectionData/Calculations/Calculations.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>
#include <string>

#include "Exception/Assert.h"
#include "Text/ToString.h"

extern "C" {
void dgetrf_(const int* m, const int* n, double* a, const int* lda, int* ipiv, int* info);
void dgetri_(const int* n, double* a, const int* lda, const int* ipiv, double* work, const int* lwork, int* info);
void cblas_dgemv(int layout, int trans, int m, int n, double alpha, const double* a, int lda, const double* x, int incX,
                 double beta, double* y, int incY);
}

namespace CorrectionData {

namespace {

constexpr int cblasRowMajor = 101;
constexpr int cblasNoTrans = 111;

bool areFinite(const std::vector<double>& values) {
    return std::all_of(values.begin(), values.end(), [](double value) { return std::isfinite(value); });
}

bool areDistinct(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return std::adjacent_find(values.begin(), values.end()) == values.end();
}

bool fitsFloat(double value) { return std::abs(value) <= static_cast<double>(std::numeric_limits<float>::max()); }

/// Inverts in place. The routines read the rows as columns; the inverse of the transpose is the transposed inverse, so
/// what they leave is the inverse row by row again.
bool invert(std::vector<double>& matrix, int n) {
    std::vector<int> pivots(static_cast<std::size_t>(n));
    int info = 0;
    dgetrf_(&n, &n, matrix.data(), &n, pivots.data(), &info);
    if (info != 0) return false;
    std::vector<double> work(static_cast<std::size_t>(n));
    dgetri_(&n, matrix.data(), &n, pivots.data(), work.data(), &n, &info);
    return info == 0;
}

} // namespace

void Calculations::calculateCoefficients(const std::vector<float>& xVector, const std::vector<float>& yVector,
                                         std::vector<float>& coefficients) {
    ORVEX_ASSERT(xVector.size() == yVector.size());

    const std::ptrdiff_t firstUsed = xVector.size() == 7 && xVector[1] == xVector[0] ? 1 : 0;
    const std::vector<double> x(xVector.begin() + firstUsed, xVector.end());
    const std::vector<double> y(yVector.begin() + firstUsed, yVector.end());
    if (x.empty() || !areFinite(x) || !areFinite(y) || !areDistinct(x)) {
        throw CoefficentCalculationFailedException(xVector, yVector);
    }

    std::vector<double> matrix;
    matrix.reserve(x.size() * x.size());
    for (const double value : x) {
        for (std::size_t power = 0; power < x.size(); ++power) {
            matrix.push_back(std::pow(value, static_cast<double>(power)));
        }
    }
    const int n = static_cast<int>(x.size());
    std::vector<double> solution(x.size(), 0.0);
    if (!areFinite(matrix) || !invert(matrix, n)) throw CoefficentCalculationFailedException(xVector, yVector);
    cblas_dgemv(cblasRowMajor, cblasNoTrans, n, n, 1.0, matrix.data(), n, y.data(), 1, 1.0, solution.data(), 1);
    if (!std::all_of(solution.begin(), solution.end(), fitsFloat)) {
        throw CoefficentCalculationFailedException(xVector, yVector);
    }
    std::transform(solution.begin(), solution.end(), std::back_inserter(coefficients),
                   [](double coefficient) { return static_cast<float>(coefficient); });
}

namespace {

std::string details(const std::vector<float>& xVector, const std::vector<float>& yVector) {
    std::string text = "X Vector:";
    for (const float x : xVector) text += ' ' + Text::toString(x);
    text += "\nY Vector:";
    for (const float y : yVector) text += ' ' + Text::toString(y);
    return text;
}

} // namespace

CoefficentCalculationFailedException::CoefficentCalculationFailedException(const std::vector<float>& xVector,
                                                                           const std::vector<float>& yVector)
    : Exception("Calculation of the polynomial coefficients did fail.", details(xVector, yVector)) {}

} // namespace CorrectionData
