#include "Timecode/InvalidTimecodeException.h"

#include "Exception/DetailLines.h"
#include "Text/ToString.h"

namespace Timecode {

InvalidTimecodeException::InvalidTimecodeException(const std::string& briefDescription, const std::string& timecode,
                                                   float framesPerSecond)
    : Exception(briefDescription, DetailLines()
                                      .text("Timecode String", timecode)
                                      .text("Frames per Second", Text::toString(framesPerSecond))
                                      .string()) {}

InvalidTimecodeException::InvalidTimecodeException(const std::string& briefDescription, const std::string& lhsTimecode,
                                                   const std::string& rhsTimecode)
    : Exception(briefDescription,
                DetailLines().text("Lhs Timecode", lhsTimecode).text("Rhs Timecode", rhsTimecode).string()) {}

} // namespace Timecode
