#include "CorrectionData/Calculations/CoefficentCalculationFailedException.h"

#include <locale>
#include <sstream>
#include <string>

namespace CorrectionData {

namespace {

std::string details(const std::vector<float>& xVector, const std::vector<float>& yVector) {
    std::ostringstream stream;
    stream.imbue(std::locale::classic());
    stream << "X Vector:";
    for (const float x : xVector) stream << ' ' << x;
    stream << "\nY Vector:";
    for (const float y : yVector) stream << ' ' << y;
    return stream.str();
}

} // namespace

CoefficentCalculationFailedException::CoefficentCalculationFailedException(const std::vector<float>& xVector,
                                                                           const std::vector<float>& yVector)
    : Exception("Calculation of the polynomial coefficients did fail.", details(xVector, yVector)) {}

} // namespace CorrectionData
