#include "Timecode/InvalidTimecodeException.h"

#include <locale>
#include <sstream>

#include "Exception/DetailLines.h"

namespace Timecode {

InvalidTimecodeException::InvalidTimecodeException(const std::string& briefDescription, const std::string& timecode,
                                                   float framesPerSecond)
    : Exception(briefDescription) {
    std::ostringstream rate;
    rate.imbue(std::locale::classic());
    rate << framesPerSecond;
    setDetails(DetailLines().text("Timecode String", timecode).text("Frames per Second", rate.str()).string());
}

InvalidTimecodeException::InvalidTimecodeException(const std::string& briefDescription, const std::string& lhsTimecode,
                                                   const std::string& rhsTimecode)
    : Exception(briefDescription,
                DetailLines().text("Lhs Timecode", lhsTimecode).text("Rhs Timecode", rhsTimecode).string()) {}

} // namespace Timecode
