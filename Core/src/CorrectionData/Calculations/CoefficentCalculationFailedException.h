#pragma once

#include <vector>

#include "Exception/Exception.h"

namespace CorrectionData {

/// No polynomial could be laid through the points. Spelled so on purpose: callers match on this name.
class CoefficentCalculationFailedException : public Exception {
public:
    CoefficentCalculationFailedException(const std::vector<float>& xVector, const std::vector<float>& yVector);
};

} // namespace CorrectionData
