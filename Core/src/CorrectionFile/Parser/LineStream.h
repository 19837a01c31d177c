#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace CorrectionFile {

/// A position in a text that is read line by line without being copied. The text must outlive the stream.
struct LineStream {
    explicit LineStream(std::string_view text) : rest(text) {}

    std::string_view rest;      ///< what has not been read yet
    std::size_t lineNumber = 0; ///< of the line read last, counted from 1; 0: none
    std::string rewrittenLine;  ///< holds a line that cannot be a view of the text
};

/// Reads the next line without its line feed and without any carriage returns, wherever they are in the line; files
/// with either line ending read the same. A line feed at the end of the text does not start another line. Returns
/// whether a line was read; if not, `line` is untouched. The line is valid until the next call.
bool getLine(LineStream& stream, std::string_view& line);

} // namespace CorrectionFile
