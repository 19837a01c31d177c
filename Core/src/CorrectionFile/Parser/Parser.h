#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "CorrectionData/Content.h"

namespace CorrectionFile {

/// Parses the text of a correction file, versions 2 and 3.
///
///     # OLCF Version 3
///     HEADER_START
///     cameraModel:=Model                       one line per key; nineteen keys are mandatory
///     HEADER_END
///     frame;heights;shading;distortion;…       a title line, not read
///     0;0,5,…;100,99.5,…;0,-0.2,…;;;;;;10.00.00.00
///
/// A frame's columns: number; 7 heights (version 3 only: version 2 measures at 0, 5, 10, 15, 18 and 21.4 mm); as many
/// shading values; as many distortion values; five ignored columns; timecode. Header and body are found by two
/// independent scans. Lines end in LF or CR LF; all comparisons are exact; numbers do not depend on the locale.
///
/// Every operation leaves its output untouched on failure. Format errors throw InvalidFormatException with the reason,
/// or with the line and its number (counted from 1). Text in place of a frame's number or value throws the conversion's
/// own boost::bad_lexical_cast instead, on purpose. Stateless; any thread may use it.
class Parser {
public:
    /// Parses header and body, and replaces `content`.
    void parse(const std::string& text, CorrectionData::Content& content) const;

    /// Parses the header alone; needs neither version line nor body. If a key occurs twice, its first value counts. A
    /// number or flag that does not convert becomes 0 or false, except tcFps; videoFileName must not be empty.
    void parseHeader(const std::string& text, CorrectionData::Header& header) const;

    /// Parses the body alone and puts its frames into the map; for equal frame numbers the later line counts.
    /// Heights and shading must be 0…100, distortion −100…100.
    void parseBody(const std::string& text, std::map<std::uint32_t, CorrectionData::Frame>& frames) const;
};

} // namespace CorrectionFile
