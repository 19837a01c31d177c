#include "Check/HeaderCheck.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <type_traits>

#include "Check/Findings.h"
#include "CorrectionFile/Parser/HeaderLine.h"
#include "CorrectionFile/Parser/InvalidFormatException.h"
#include "CorrectionFile/Parser/Parser.h"
#include "Lens/CorrectionFileData.h"
#include "Text/StrictConversion.h"

namespace Tools {

using CorrectionData::Header;
using CorrectionFile::getLine;
using CorrectionFile::InvalidFormatException;
using CorrectionFile::LineStream;

// The line that was probably meant for one that is missing.
std::string HeaderCheck::similarLineHint(std::string_view wanted) const {
    LineStream stream(m_text);
    std::string_view line;
    while (getLine(stream, line)) {
        if (line != wanted && equalsIgnoringCase(trimmed(line), wanted)) {
            return fmt::format("; line {} reads {}", stream.lineNumber, quoted(line));
        }
    }
    return "";
}

HeaderCheck::HeaderCheck(const std::string& text, Findings& findings) : m_text(text), m_findings(findings) {
    const std::size_t defectCountBefore = m_findings.defectCount();
    const Entries entries = readEntries();
    if (!m_hasHeaderStart) {
        m_findings.defect(
            0, "header-start",
            "Header start could not be found: no line reads \"HEADER_START\"" + similarLineHint("HEADER_START"));
    } else if (!m_hasHeaderEnd) {
        m_findings.defect(m_headerStartLine, "header-end",
                          "Header end could not be found: no line after this one reads \"HEADER_END\"" +
                              similarLineHint("HEADER_END"));
    }
    if (m_hasHeaderStart) checkMandatoryEntries(entries);
    readHeader(entries);

    // The parser's own word is the last one.
    try {
        Header header;
        CorrectionFile::Parser().parseHeader(m_text, header);
    } catch (const InvalidFormatException& exception) {
        if (m_findings.defectCount() == defectCountBefore) m_findings.defect(0, "header", reasonOf(exception));
    }
    checkHeaderValues(entries);
}

HeaderCheck::Entries HeaderCheck::readEntries() {
    Entries entries;
    LineStream stream(m_text);
    std::string_view line;
    while (!m_hasHeaderStart && getLine(stream, line)) {
        m_hasHeaderStart = line == "HEADER_START";
        m_headerStartLine = stream.lineNumber;
    }
    if (!m_hasHeaderStart) return entries;
    for (LineStream rest = stream; !m_hasHeaderEnd && getLine(rest, line);) m_hasHeaderEnd = line == "HEADER_END";
    while (getLine(stream, line)) {
        if (line == "HEADER_END") return entries;
        if (line.empty()) continue;
        // Without an end the parser would take the body for entries; the missing end is the defect then.
        if (!m_hasHeaderEnd && line.starts_with("frame;")) return entries;
        std::string_view key;
        std::string_view value;
        if (CorrectionFile::splitHeaderLine(line, key, value)) {
            addEntry(entries, key, value, stream);
        } else {
            m_findings.defect(
                stream.lineNumber, "header-line",
                fmt::format("a header line must read key:=value with exactly one \":=\", but this one is {}",
                            quoted(line)));
        }
    }
    return entries;
}

void HeaderCheck::addEntry(Entries& entries, std::string_view key, std::string_view value, const LineStream& stream) {
    const auto& keys = CorrectionFile::mandatoryHeaderKeys;
    if (std::find(keys.begin(), keys.end(), key) == keys.end()) {
        const auto meant = std::find_if(
            keys.begin(), keys.end(), [&](std::string_view known) { return equalsIgnoringCase(trimmed(key), known); });
        if (meant != keys.end()) {
            m_findings.warning(stream.lineNumber, "header-key",
                               fmt::format("key {} is ignored; did you mean \"{}\"?", quoted(key), *meant));
        }
        return;
    }
    // A line with a carriage return within is a copy that does not last.
    const bool isView = value.data() >= m_text.data() && value.data() <= m_text.data() + m_text.size();
    if (!isView) {
        m_copies.push_back(std::make_unique<std::string>(value));
        value = *m_copies.back();
    }
    const std::string_view known = *std::find(keys.begin(), keys.end(), key);
    const auto [entry, isNew] = entries.try_emplace(known, Entry{value, stream.lineNumber});
    if (!isNew) {
        m_findings.warning(
            stream.lineNumber, "duplicate-key",
            fmt::format("key \"{}\" is repeated; the value of line {} is used", known, entry->second.lineNumber));
    }
}

void HeaderCheck::checkMandatoryEntries(const Entries& entries) {
    for (const std::string_view key : CorrectionFile::mandatoryHeaderKeys) {
        if (!entries.contains(key)) {
            m_findings.defect(0, "header-entry", fmt::format("Header entry with key \"{}\" was not found", key));
        }
    }
    if (const auto entry = entries.find("videoFileName"); entry != entries.end() && entry->second.value.empty()) {
        m_findings.defect(entry->second.lineNumber, "header-entry",
                          "Header entry with key \"videoFileName\" does not have a value");
    }
    float rate = 0.0f;
    if (const auto entry = entries.find("tcFps");
        entry != entries.end() && !Text::convertStrictly(entry->second.value, rate)) {
        m_findings.defect(entry->second.lineNumber, "header-entry",
                          fmt::format("Header entry with key \"tcFps\" does not have a valid value: {} is not a number",
                                      quoted(entry->second.value)));
    }
}

// Lets the parser convert the entries that there are, with harmless values for what is missing.
void HeaderCheck::readHeader(const Entries& entries) {
    std::string text = "HEADER_START\n";
    for (const std::string_view key : CorrectionFile::mandatoryHeaderKeys) {
        const auto entry = entries.find(key);
        std::string value = entry != entries.end() ? std::string(entry->second.value) : "";
        float rate = 0.0f;
        if (key == "videoFileName" && value.empty()) value = "unknown";
        if (key == "tcFps" && !Text::convertStrictly(value, rate)) value = "0";
        text += std::string(key) + ":=" + value + "\n";
    }
    CorrectionFile::Parser().parseHeader(text + "HEADER_END\n", m_header);
}

template <typename Number>
void HeaderCheck::checkNumber(const Entries& entries, std::string_view key, Number converted) {
    const auto entry = entries.find(key);
    if (entry == entries.end()) return;
    const std::string_view value = entry->second.value;
    float number = 0.0f;
    const bool isNumber = Text::convertStrictly(value, number);
    if (converted == Number{} && !(isNumber && number == 0.0f)) {
        m_findings.warning(
            entry->second.lineNumber, "became-zero",
            fmt::format("{} {} counts as {}", key, quoted(value), std::is_same_v<Number, bool> ? "false (0)" : "0"));
    } else if (std::is_unsigned_v<Number> && isNumber && number < 0.0f) {
        m_findings.warning(entry->second.lineNumber, "negative",
                           fmt::format("{} {} counts as {}", key, quoted(value), converted));
    } else if (isNumber && !std::isfinite(number)) {
        m_findings.warning(entry->second.lineNumber, "not-finite",
                           fmt::format("{} {} is not a finite number", key, quoted(value)));
    }
}

void HeaderCheck::checkHeaderValues(const Entries& entries) {
    checkNumber(entries, "lensMinFocalLength", m_header.lensMinFocalLength);
    checkNumber(entries, "lensMaxFocalLength", m_header.lensMaxFocalLength);
    checkNumber(entries, "sensorWidth", m_header.sensorWidth);
    checkNumber(entries, "clipDurationFrames", m_header.clipDurationFrames);
    checkNumber(entries, "clipWidth", m_header.clipWidth);
    checkNumber(entries, "clipHeight", m_header.clipHeight);
    checkNumber(entries, "tcDrop", m_header.tcDrop);
    checkNumber(entries, "enableLensShadingCorrection", m_header.enableLensShadingCorrection);
    checkNumber(entries, "shadingGamma", m_header.shadingGamma);
    checkNumber(entries, "enableLensDistortionCorrection", m_header.enableLensDistortionCorrection);
    checkNumber(entries, "distortionZoom", m_header.distortionZoom);

    const auto rate = entries.find("tcFps");
    if (rate != entries.end() && !(m_header.tcFps >= 0.0f && m_header.tcFps <= 1000.0f)) {
        m_findings.warning(rate->second.lineNumber, "timecode-rate",
                           fmt::format("tcFps {} is not a usable rate; frames cannot be looked up by timecode",
                                       quoted(rate->second.value)));
    } else if (rate != entries.end() && m_header.tcFps == 0.0f &&
               Text::convertStrictly(rate->second.value, m_header.tcFps)) {
        m_findings.warning(rate->second.lineNumber, "timecode-rate",
                           "tcFps is 0: timecodes are not used, frames are looked up by number");
    }
    auto content = std::make_shared<CorrectionData::Content>();
    content->header = m_header;
    m_imageRadius = correctionFileDataOf(content).recordingFormat.imageRadius;
    if (m_hasHeaderStart && !(m_imageRadius > 0.0f)) {
        m_findings.warning(
            0, "recording-format",
            "the header gives no recording format and the built-in table has no single match; it must be "
            "entered by hand");
    }
}

} // namespace Tools
