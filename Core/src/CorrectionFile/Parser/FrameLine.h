#pragma once

#include <string_view>

#include "CorrectionData/Content.h"
#include "CorrectionFile/Parser/LineStream.h"

namespace CorrectionFile {

/// Reads up to the first frame line: past the version line, then past the title line that begins with "frame;".
/// Answers whether the file is of version 3; otherwise it is of version 2. Throws InvalidFormatException with the
/// reason.
bool readUntilFrameLines(LineStream& stream);

/// Parses one frame line, which is not empty. False, with the frame undefined, when the line is invalid; text in the
/// place of a number is a boost::bad_lexical_cast. Any thread.
bool parseFrameLine(std::string_view line, bool isVersion3, CorrectionData::Frame& frame);

} // namespace CorrectionFile
