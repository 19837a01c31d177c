#include "CorrectionFile/Parser/Parser.h"

#include <algorithm>
#include <array>
#include <boost/lexical_cast/bad_lexical_cast.hpp>
#include <boost/throw_exception.hpp>
#include <cmath>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "CorrectionFile/Parser/InvalidFormatException.h"
#include "CorrectionFile/Parser/LineStream.h"
#include "Text/StrictConversion.h"

namespace CorrectionFile {

namespace {

using CorrectionData::Content;
using CorrectionData::Frame;
using CorrectionData::Header;

// In the order in which they are checked.
constexpr std::array<std::string_view, 19> mandatoryHeaderKeys = {"lensManufacturer",
                                                                  "lensTypeName",
                                                                  "lensSerialNumber",
                                                                  "lensMinFocalLength",
                                                                  "lensMaxFocalLength",
                                                                  "cameraManufacturer",
                                                                  "cameraModel",
                                                                  "sensorWidth",
                                                                  "clipName",
                                                                  "videoFileName",
                                                                  "clipDurationFrames",
                                                                  "clipWidth",
                                                                  "clipHeight",
                                                                  "tcFps",
                                                                  "tcDrop",
                                                                  "enableLensShadingCorrection",
                                                                  "shadingGamma",
                                                                  "enableLensDistortionCorrection",
                                                                  "distortionZoom"};

constexpr std::size_t version3HeightCount = 7;
constexpr std::array<std::string_view, 6> version2Heights = {"0.0", "5.0", "10.0", "15.0", "18.0", "21.4"};

// The first pieces of a column, and how many pieces there are (not counted beyond one too many).
struct Pieces {
    std::array<std::string_view, version3HeightCount> values;
    std::size_t count = 0;
};

class HeaderEntries {
public:
    // Entries under other keys than the mandatory ones are read by nobody and need no memory.
    void addIfNew(std::string_view key, std::string_view value) {
        const auto* const position = std::find(mandatoryHeaderKeys.begin(), mandatoryHeaderKeys.end(), key);
        if (position == mandatoryHeaderKeys.end()) return;
        std::optional<std::string>& entry = m_values[indexOf(position)];
        if (!entry) entry = std::string(value);
    }

    void checkIfCompleteAndThrowIfNeeded() const {
        for (std::size_t i = 0; i < m_values.size(); ++i) {
            if (m_values[i]) continue;
            throw InvalidFormatException("Header entry with key \"" + std::string(mandatoryHeaderKeys[i]) +
                                         "\" was not found.");
        }
    }

    const std::string& value(std::string_view key) const {
        return *m_values[indexOf(std::find(mandatoryHeaderKeys.begin(), mandatoryHeaderKeys.end(), key))];
    }

    // 0 or false when the value does not convert.
    template <typename Value>
    Value lenientValue(std::string_view key) const {
        Value converted{};
        Text::convertStrictly(value(key), converted);
        return converted;
    }

private:
    static std::size_t indexOf(const std::string_view* position) {
        return static_cast<std::size_t>(position - mandatoryHeaderKeys.begin());
    }

    std::array<std::optional<std::string>, mandatoryHeaderKeys.size()> m_values;
};

bool beginsWith(std::string_view line, std::string_view prefix) { return line.substr(0, prefix.size()) == prefix; }

void skipUntilHeaderStart(LineStream& stream) {
    std::string_view line;
    while (getLine(stream, line)) {
        if (line == "HEADER_START") return;
    }
    throw InvalidFormatException("Header start could not be found.");
}

HeaderEntries readHeaderEntries(LineStream& stream) {
    constexpr std::string_view separator = ":=";
    HeaderEntries entries;
    std::string_view line;
    while (getLine(stream, line)) {
        if (line == "HEADER_END") return entries;
        if (line.empty()) continue;
        const std::size_t keyEnd = line.find(separator);
        const bool hasTwoPieces = keyEnd != std::string_view::npos &&
                                  line.find(separator, keyEnd + separator.size()) == std::string_view::npos;
        if (!hasTwoPieces) throw InvalidFormatException(stream.lineNumber, std::string(line));
        entries.addIfNew(line.substr(0, keyEnd), line.substr(keyEnd + separator.size()));
    }
    throw InvalidFormatException("Header end could not be found.");
}

Header convertedHeader(const HeaderEntries& entries) {
    Header header;
    header.lensManufacturer = entries.value("lensManufacturer");
    header.lensTypeName = entries.value("lensTypeName");
    header.lensSerialNumber = entries.value("lensSerialNumber");
    header.lensMinFocalLength = entries.lenientValue<std::uint16_t>("lensMinFocalLength");
    header.lensMaxFocalLength = entries.lenientValue<std::uint16_t>("lensMaxFocalLength");
    header.cameraManufacturer = entries.value("cameraManufacturer");
    header.cameraModel = entries.value("cameraModel");
    header.sensorWidth = entries.lenientValue<float>("sensorWidth");
    header.clipName = entries.value("clipName");
    header.videoFileName = entries.value("videoFileName");
    if (header.videoFileName.empty()) {
        throw InvalidFormatException("Header entry with key \"videoFileName\" does not have a value.");
    }
    header.clipDurationFrames = entries.lenientValue<std::uint32_t>("clipDurationFrames");
    header.clipWidth = entries.lenientValue<std::uint32_t>("clipWidth");
    header.clipHeight = entries.lenientValue<std::uint32_t>("clipHeight");
    // Strict on purpose: a wrong rate would silently pick wrong frames.
    if (!Text::convertStrictly(entries.value("tcFps"), header.tcFps)) {
        throw InvalidFormatException("Header entry with key \"tcFps\" does not have a valid value.");
    }
    header.tcDrop = entries.lenientValue<bool>("tcDrop");
    header.enableLensShadingCorrection = entries.lenientValue<bool>("enableLensShadingCorrection");
    header.shadingGamma = entries.lenientValue<float>("shadingGamma");
    header.enableLensDistortionCorrection = entries.lenientValue<bool>("enableLensDistortionCorrection");
    header.distortionZoom = entries.lenientValue<float>("distortionZoom");
    return header;
}

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

// False if the line is invalid; throws the conversion's error if a number is none.
bool parseFrame(std::string_view line, bool isVersion3, Frame& frame) {
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

} // namespace

void Parser::parse(const std::string& text, Content& content) const {
    Content parsed;
    parseHeader(text, parsed.header);
    parseBody(text, parsed.frames);
    content = std::move(parsed);
}

void Parser::parseHeader(const std::string& text, Header& header) const {
    LineStream stream(text);
    skipUntilHeaderStart(stream);
    const HeaderEntries entries = readHeaderEntries(stream);
    entries.checkIfCompleteAndThrowIfNeeded();
    header = convertedHeader(entries);
}

void Parser::parseBody(const std::string& text, std::map<std::uint32_t, Frame>& frames) const {
    LineStream stream(text);
    const bool isVersion3 = readIsVersion3(stream);
    skipUntilBodyStart(stream);

    std::map<std::uint32_t, Frame> parsed;
    std::string_view line;
    while (getLine(stream, line)) {
        if (line.empty()) continue;
        Frame frame;
        if (!parseFrame(line, isVersion3, frame)) throw InvalidFormatException(stream.lineNumber, std::string(line));
        // Frames mostly come in ascending order: the hint makes their insertion constant in time.
        const auto frameNumber = static_cast<std::uint32_t>(frame.frameNumber);
        parsed.insert_or_assign(parsed.end(), frameNumber, std::move(frame));
    }

    if (frames.empty()) {
        frames.swap(parsed);
    } else {
        for (auto& [frameNumber, frame] : parsed) frames.insert_or_assign(frameNumber, std::move(frame));
    }
}

} // namespace CorrectionFile
