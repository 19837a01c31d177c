#pragma once

#include <vector>

#include "Exception/Exception.h"

namespace CorrectionData {

/// No polynomial passes through the points. The spelling is intentional: callers match this name.
class CoefficentCalculationFailedException : public Exception {
public:
    CoefficentCalculationFailedException(const std::vector<float>& xVector, const std::vector<float>& yVector);
};

} // namespace CorrectionData
