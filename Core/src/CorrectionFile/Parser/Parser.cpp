#include "CorrectionFile/Parser/Parser.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>
#include <utility>

#include "CorrectionFile/Parser/FrameLine.h"
#include "CorrectionFile/Parser/HeaderLine.h"
#include "CorrectionFile/Parser/InvalidFormatException.h"
#include "CorrectionFile/Parser/LineStream.h"
#include "Text/StrictConversion.h"

namespace CorrectionFile {

namespace {

using CorrectionData::Content;
using CorrectionData::Frame;
using CorrectionData::Header;

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

void skipUntilHeaderStart(LineStream& stream) {
    std::string_view line;
    while (getLine(stream, line)) {
        if (line == "HEADER_START") return;
    }
    throw InvalidFormatException("Header start could not be found.");
}

HeaderEntries readHeaderEntries(LineStream& stream) {
    HeaderEntries entries;
    std::string_view line;
    while (getLine(stream, line)) {
        if (line == "HEADER_END") return entries;
        if (line.empty()) continue;
        std::string_view key;
        std::string_view value;
        if (!splitHeaderLine(line, key, value)) throw InvalidFormatException(stream.lineNumber, std::string(line));
        entries.addIfNew(key, value);
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
    const bool isVersion3 = readUntilFrameLines(stream);

    std::map<std::uint32_t, Frame> parsed;
    std::string_view line;
    while (getLine(stream, line)) {
        if (line.empty()) continue;
        Frame frame;
        if (!parseFrameLine(line, isVersion3, frame))
            throw InvalidFormatException(stream.lineNumber, std::string(line));
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
