#include "CorrectionData/Calculations/CoefficentCalculationFailedException.h"

#include <string>

#include "Text/ToString.h"

namespace CorrectionData {

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
