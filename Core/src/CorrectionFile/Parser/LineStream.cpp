#include "CorrectionFile/Parser/LineStream.h"

#include <algorithm>

namespace CorrectionFile {

bool getLine(LineStream& stream, std::string_view& line) {
    if (stream.rest.empty()) return false;
    const std::size_t end = stream.rest.find('\n');
    line = stream.rest.substr(0, end);
    stream.rest.remove_prefix(end == std::string_view::npos ? stream.rest.size() : end + 1);
    ++stream.lineNumber;

    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    if (line.find('\r') != std::string_view::npos) {
        stream.rewrittenLine.assign(line);
        stream.rewrittenLine.erase(std::remove(stream.rewrittenLine.begin(), stream.rewrittenLine.end(), '\r'),
                                   stream.rewrittenLine.end());
        line = stream.rewrittenLine;
    }
    return true;
}

} // namespace CorrectionFile
