#include "CorrectionFile/Parser/FrameLine.h"

#include <algorithm>
#include <array>
#include <boost/lexical_cast/bad_lexical_cast.hpp>
#include <boost/throw_exception.hpp>
#include <string>
#include <vector>

#include "CorrectionFile/Parser/InvalidFormatException.h"
#include "Text/StrictConversion.h"

namespace CorrectionFile {

namespace {

using CorrectionData::Frame;

constexpr std::size_t version3HeightCount = 7;
constexpr std::array<std::string_view, 6> version2Heights = {"0.0", "5.0", "10.0", "15.0", "18.0", "21.4"};

// The first pieces of a column, and how many pieces there are (not counted beyond one too many).
struct Pieces {
    std::array<std::string_view, version3HeightCount> values;
    std::size_t count = 0;
};

bool beginsWith(std::string_view line, std::string_view prefix) { return line.substr(0, prefix.size()) == prefix; }

// Reads up to and including the version line.
bool readIsVersion3(LineStream& stream) {
    std::string_view line;
    while (getLine(stream, line)) {
        if (!beginsWith(line, "# OLCF Version ")) continue;
        if (line == "# OLCF Version 2") return false;
        if (line == "# OLCF Version 3") return true;
        throw InvalidFormatException("Version is not supported.");
    }
    throw InvalidFormatException("Version could not be found.");
}

void skipUntilBodyStart(LineStream& stream) {
    std::string_view line;
    while (getLine(stream, line)) {
        if (beginsWith(line, "frame;")) return;
    }
    throw InvalidFormatException("Body start could not be found.");
}

template <typename Number>
Number convertedOrBadCast(std::string_view text) {
    Number number{};
    if (!Text::convertStrictly(text, number)) {
        boost::throw_exception(boost::bad_lexical_cast(typeid(std::string), typeid(Number)));
    }
    return number;
}

// Splits a line's leading columns. False if the line has fewer.
template <std::size_t Count>
bool splitColumns(std::string_view line, std::array<std::string_view, Count>& columns, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t end = line.find(';');
        columns[i] = line.substr(0, end);
        if (end == std::string_view::npos) return i + 1 == count;
        line.remove_prefix(end + 1);
    }
    return true;
}

Pieces splitAtCommas(std::string_view column) {
    Pieces pieces;
    for (;;) {
        const std::size_t end = column.find(',');
        if (pieces.count < pieces.values.size()) pieces.values[pieces.count] = column.substr(0, end);
        ++pieces.count;
        if (end == std::string_view::npos || pieces.count > pieces.values.size()) return pieces;
        column.remove_prefix(end + 1);
    }
}

std::vector<float> convertedValues(const Pieces& pieces) {
    std::vector<float> values;
    values.reserve(pieces.count);
    for (std::size_t i = 0; i < pieces.count; ++i) values.push_back(convertedOrBadCast<float>(pieces.values[i]));
    return values;
}

// Written so that not-a-number is out of range.
bool areWithin(const std::vector<float>& values, float lowest, float highest) {
    return std::all_of(values.begin(), values.end(), [&](float value) { return value >= lowest && value <= highest; });
}

} // namespace

bool readUntilFrameLines(LineStream& stream) {
    const bool isVersion3 = readIsVersion3(stream);
    skipUntilBodyStart(stream);
    return isVersion3;
}

bool parseFrameLine(std::string_view line, bool isVersion3, Frame& frame) {
    const std::size_t shadingColumn = isVersion3 ? 2 : 1;
    const std::size_t timecodeColumn = isVersion3 ? 9 : 8;
    std::array<std::string_view, 10> columns;
    if (!splitColumns(line, columns, timecodeColumn + 1)) return false;

    frame.frameNumber = convertedOrBadCast<std::int32_t>(columns[0]);
    if (frame.frameNumber < 0) return false;

    Pieces heights;
    if (isVersion3) {
        heights = splitAtCommas(columns[1]);
        if (heights.count != version3HeightCount) return false;
    } else {
        std::copy(version2Heights.begin(), version2Heights.end(), heights.values.begin());
        heights.count = version2Heights.size();
    }
    const Pieces shading = splitAtCommas(columns[shadingColumn]);
    if (shading.count != heights.count) return false;
    const Pieces radialDistortion = splitAtCommas(columns[shadingColumn + 1]);
    if (radialDistortion.count != heights.count) return false;

    frame.heights = convertedValues(heights);
    frame.shading = convertedValues(shading);
    frame.radialDistortion = convertedValues(radialDistortion);
    const bool isInRange = areWithin(frame.heights, 0.0f, 100.0f) && areWithin(frame.shading, 0.0f, 100.0f) &&
                           areWithin(frame.radialDistortion, -100.0f, 100.0f);
    if (!isInRange) return false;

    frame.timecode = columns[timecodeColumn];
    std::replace(frame.timecode.begin(), frame.timecode.end(), '.', ':');
    return true;
}

} // namespace CorrectionFile
