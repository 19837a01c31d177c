#pragma once

#include <string_view>

#include "CorrectionData/Content.h"
#include "CorrectionFile/Parser/LineStream.h"

namespace CorrectionFile {

/// Reads up to the first frame line: past the version line, then past the title line that begins with "frame;". Returns
/// whether the file has version 3; otherwise it has version 2. Throws InvalidFormatException with the reason.
bool readUntilFrameLines(LineStream& stream);

/// Parses one non-empty frame line. Returns false, leaving the frame undefined, if the line is invalid; throws
/// boost::bad_lexical_cast for text in place of a number. Any thread.
bool parseFrameLine(std::string_view line, bool isVersion3, CorrectionData::Frame& frame);

} // namespace CorrectionFile
