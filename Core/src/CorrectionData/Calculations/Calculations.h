#pragma once

#include <vector>

#include "Exception/Exception.h"

namespace CorrectionData {

/// No polynomial passes through the points. The spelling is intentional: callers match this name.
class CoefficentCalculationFailedException : public Exception {
public:
    CoefficentCalculationFailedException(const std::vector<float>& xVector, const std::vector<float>& yVector);
};

/// Turns the few points at which a lens was measured into a continuous function of the image height.
class Calculations {
public:
    /// Appends the coefficients c0, c1, … of the polynomial c0 + c1·x + c2·x² + … that passes exactly through the n
    /// points (x, y): n coefficients, computed in double precision. If there are exactly 7 points and the first two
    /// abscissae are equal, the first point is dropped, which leaves 6 coefficients.
    ///
    /// Example: abscissae 0, 1, 2 with ordinates 1, 2, 5 give 1, 0, 1. Both lists must have the same length (a
    /// programming error otherwise). Throws CoefficentCalculationFailedException, appending nothing, when there is no
    /// point, two abscissae are equal, a value or a coefficient is not finite, or the system is singular. Any thread.
    static void calculateCoefficients(const std::vector<float>& xVector, const std::vector<float>& yVector,
                                      std::vector<float>& coefficients);
};

} // namespace CorrectionData
