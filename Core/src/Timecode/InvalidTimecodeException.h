#pragma once

#include <string>

#include "Exception/Exception.h"

namespace Timecode {

/// A timecode could not be built from its text or advanced, or two timecodes could not be compared or subtracted.
class InvalidTimecodeException : public Exception {
public:
    /// Details: `Timecode String: "01:00:00:25"` and `Frames per Second: "25"` (six significant digits).
    InvalidTimecodeException(const std::string& briefDescription, const std::string& timecode, float framesPerSecond);

    /// Details: `Lhs Timecode: "01:00:00:00@25"` and `Rhs Timecode: "01:00:00:00@24"`.
    InvalidTimecodeException(const std::string& briefDescription, const std::string& lhsTimecode,
                             const std::string& rhsTimecode);
};

} // namespace Timecode
