#pragma once

#include <boost/math/policies/error_handling.hpp>
#include <boost/math/special_functions/round.hpp>

/// Rounds half away from zero to a whole number: 0.5 to 1, −0.5 to −1, 1224.5 to 1225.
///
/// Throws boost::math::rounding_error ("Value … can not be represented in the target integer type.") for a value that
/// is not finite or does not fit an int.
inline int roundToInteger(float value) {
    const float rounded = boost::math::round(value);
    // The limit is written as a power of two since the largest int has no float of its own.
    if (!(rounded >= -2147483648.0f && rounded < 2147483648.0f)) {
        return static_cast<int>(boost::math::policies::raise_rounding_error(
            "boost::math::round<%1%>(%1%)", "Value %1% can not be represented in the target integer type.", value,
            value, boost::math::policies::policy<>()));
    }
    return static_cast<int>(rounded);
}

/// Rounds half away from zero to two decimals: 25.345 to 25.35. Throws as roundToInteger does for values that are not
/// finite.
template <typename Real>
Real roundToTwoDecimals(Real value) {
    return boost::math::round(value * Real(100)) / Real(100);
}
