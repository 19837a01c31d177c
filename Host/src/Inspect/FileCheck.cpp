// A check reads the text twice, as the parser does: once for the header, once for the version and the frames.
//
// Whether something is a defect is decided by the parser's functions; the code here only finds the words for it. Where
// the parser would have stopped, the check goes on with the likeliest reading: with the values that a broken header
// does give, and with the version that a frame line fits. What it finds from there on can only add to the defects.

#include "Inspect/FileCheck.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <boost/lexical_cast/bad_lexical_cast.hpp>
#include <cmath>
#include <limits>
#include <map>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "CorrectionData/Content.h"
#include "CorrectionFile/Parser/FrameLine.h"
#include "CorrectionFile/Parser/HeaderLine.h"
#include "CorrectionFile/Parser/InvalidFormatException.h"
#include "CorrectionFile/Parser/LineStream.h"
#include "CorrectionFile/Parser/Parser.h"
#include "CorrectionFile/Reader/NotReadableException.h"
#include "CorrectionFile/Reader/Reader.h"
#include "Inspect/CorrectionFileData.h"
#include "Inspect/FitProblems.h"
#include "Text/StrictConversion.h"
#include "Timecode/InvalidTimecodeException.h"
#include "Timecode/Timecode.h"

namespace Host {

namespace {

using CorrectionData::Frame;
using CorrectionData::Header;
using CorrectionFile::getLine;
using CorrectionFile::InvalidFormatException;
using CorrectionFile::LineStream;

constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
constexpr std::string_view versionPrefix = "# OLCF Version ";

// A text from the file as it may stand in a message: no control characters, not too long.
std::string quoted(std::string_view text) {
    constexpr std::size_t longest = 60;
    std::string shown = "\"";
    for (const char c : text.substr(0, longest)) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x20 || byte == 0x7F) {
            shown += fmt::format("\\x{:02X}", byte);
        } else {
            shown += c;
        }
    }
    return shown + (text.size() > longest ? "…\"" : "\"");
}

std::string_view trimmed(std::string_view text) {
    if (text.starts_with(byteOrderMark)) text.remove_prefix(byteOrderMark.size());
    while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) text.remove_prefix(1);
    while (!text.empty() && (text.back() == ' ' || text.back() == '\t')) text.remove_suffix(1);
    return text;
}

bool equalsIgnoringCase(std::string_view lhs, std::string_view rhs) {
    const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
    return std::equal(lhs.begin(), lhs.end(), rhs.begin(), rhs.end(),
                      [&](char left, char right) { return lower(left) == lower(right); });
}

std::vector<std::string_view> split(std::string_view text, char separator) {
    std::vector<std::string_view> pieces;
    for (;;) {
        const std::size_t end = text.find(separator);
        pieces.push_back(text.substr(0, end));
        if (end == std::string_view::npos) return pieces;
        text.remove_prefix(end + 1);
    }
}

// The reason within the detail lines of a format error.
std::string reasonOf(const InvalidFormatException& exception) {
    std::string details = exception.detailedDescription();
    details.erase(0, details.find('\n') + 1);
    if (!details.empty() && details.back() == '\n') details.pop_back();
    constexpr std::string_view label = "Reason: ";
    if (details.starts_with(label)) details.erase(0, label.size());
    return details;
}

struct FrameEntry {
    static constexpr std::uint32_t noTimecode = std::numeric_limits<std::uint32_t>::max();

    std::uint32_t frameNumber;
    std::uint32_t timecode; ///< in frames since 00:00:00:00
    std::size_t lineNumber;
};

// A warning that holds for many frames.
struct Repeated {
    std::size_t lineNumber = 0;
    std::string message; ///< the first one
    std::int32_t firstFrame = 0;
    std::size_t count = 0;
};

class TextCheck {
public:
    TextCheck(const std::string& text, const FileCheck::Report& report) : m_text(text), m_report(report) {}

    CheckSummary run() {
        checkEncoding();
        checkHeader();
        checkBody();
        return m_summary;
    }

private:
    struct HeaderEntry {
        std::string_view value;
        std::size_t lineNumber = 0;
    };
    using Entries = std::map<std::string_view, HeaderEntry>;

    void defect(std::size_t lineNumber, const char* kind, const std::string& message) {
        ++m_summary.defectCount;
        m_report({Finding::Severity::Defect, lineNumber, kind, message});
    }

    void warning(std::size_t lineNumber, const std::string& kind, const std::string& message) {
        ++m_summary.warningCount;
        m_report({Finding::Severity::Warning, lineNumber, kind, message});
    }

    void checkEncoding() {
        const std::string_view text = m_text;
        if (text.starts_with(byteOrderMark)) {
            warning(
                1, "byte-order-mark",
                "the file begins with a UTF-8 byte order mark, which hides what stands in line 1; save it without one");
        } else if (text.starts_with("\xFF\xFE") || text.starts_with("\xFE\xFF")) {
            warning(1, "byte-order-mark",
                    "the file is UTF-16 text; save it as plain ASCII or UTF-8 without byte order mark");
        }
    }

    // The line that was probably meant for one that is missing.
    std::string similarLineHint(std::string_view wanted) const {
        LineStream stream(m_text);
        std::string_view line;
        while (getLine(stream, line)) {
            if (line != wanted && equalsIgnoringCase(trimmed(line), wanted)) {
                return fmt::format("; line {} reads {}", stream.lineNumber, quoted(line));
            }
        }
        return "";
    }

    void checkHeader() {
        const std::size_t defectCountBefore = m_summary.defectCount;
        const Entries entries = readEntries();
        if (!m_hasHeaderStart) {
            defect(0, "header-start",
                   "Header start could not be found: no line reads \"HEADER_START\"" + similarLineHint("HEADER_START"));
        } else if (!m_hasHeaderEnd) {
            defect(m_headerStartLine, "header-end",
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
            if (m_summary.defectCount == defectCountBefore) defect(0, "header", reasonOf(exception));
        }
        checkHeaderValues(entries);
    }

    Entries readEntries() {
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
                defect(stream.lineNumber, "header-line",
                       fmt::format("a header line reads key:=value with \":=\" exactly once, this one is {}",
                                   quoted(line)));
            }
        }
        return entries;
    }

    void addEntry(Entries& entries, std::string_view key, std::string_view value, const LineStream& stream) {
        const auto& keys = CorrectionFile::mandatoryHeaderKeys;
        if (std::find(keys.begin(), keys.end(), key) == keys.end()) {
            const auto meant = std::find_if(keys.begin(), keys.end(), [&](std::string_view known) {
                return equalsIgnoringCase(trimmed(key), known);
            });
            if (meant != keys.end()) {
                warning(stream.lineNumber, "header-key",
                        fmt::format("key {} is not read; \"{}\" is", quoted(key), *meant));
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
        const auto [entry, isNew] = entries.try_emplace(known, HeaderEntry{value, stream.lineNumber});
        if (!isNew) {
            warning(
                stream.lineNumber, "duplicate-key",
                fmt::format("key \"{}\" occurs again; the value of line {} counts", known, entry->second.lineNumber));
        }
    }

    void checkMandatoryEntries(const Entries& entries) {
        for (const std::string_view key : CorrectionFile::mandatoryHeaderKeys) {
            if (!entries.contains(key)) {
                defect(0, "header-entry", fmt::format("Header entry with key \"{}\" was not found", key));
            }
        }
        if (const auto entry = entries.find("videoFileName"); entry != entries.end() && entry->second.value.empty()) {
            defect(entry->second.lineNumber, "header-entry",
                   "Header entry with key \"videoFileName\" does not have a value");
        }
        float rate = 0.0f;
        if (const auto entry = entries.find("tcFps");
            entry != entries.end() && !Text::convertStrictly(entry->second.value, rate)) {
            defect(entry->second.lineNumber, "header-entry",
                   fmt::format("Header entry with key \"tcFps\" does not have a valid value: {} is not a number",
                               quoted(entry->second.value)));
        }
    }

    // Lets the parser convert the entries that there are, with harmless values for what is missing.
    void readHeader(const Entries& entries) {
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
    void checkNumber(const Entries& entries, std::string_view key, Number converted) {
        const auto entry = entries.find(key);
        if (entry == entries.end()) return;
        const std::string_view value = entry->second.value;
        float number = 0.0f;
        const bool isNumber = Text::convertStrictly(value, number);
        if (converted == Number{} && !(isNumber && number == 0.0f)) {
            warning(entry->second.lineNumber, "became-zero",
                    fmt::format("{} {} counts as {}", key, quoted(value),
                                std::is_same_v<Number, bool> ? "false (0)" : "0"));
        } else if (std::is_unsigned_v<Number> && isNumber && number < 0.0f) {
            warning(entry->second.lineNumber, "negative",
                    fmt::format("{} {} counts as {}", key, quoted(value), converted));
        } else if (isNumber && !std::isfinite(number)) {
            warning(entry->second.lineNumber, "not-finite",
                    fmt::format("{} {} is not a finite number", key, quoted(value)));
        }
    }

    void checkHeaderValues(const Entries& entries) {
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
            warning(rate->second.lineNumber, "timecode-rate",
                    fmt::format("tcFps {} is no usable rate; frames cannot be found by timecode",
                                quoted(rate->second.value)));
        } else if (rate != entries.end() && m_header.tcFps == 0.0f &&
                   Text::convertStrictly(rate->second.value, m_header.tcFps)) {
            warning(rate->second.lineNumber, "timecode-rate",
                    "tcFps is 0: timecodes are not used, frames are found by number");
        }
        auto content = std::make_shared<CorrectionData::Content>();
        content->header = m_header;
        m_imageRadius = correctionFileDataOf(content).recordingFormat.imageRadius;
        if (m_hasHeaderStart && !(m_imageRadius > 0.0f)) {
            warning(0, "recording-format",
                    "the header gives no recording format and the built-in table has no single match; it must be "
                    "entered by hand");
        }
    }

    void checkBody() {
        LineStream stream(m_text);
        bool isVersion3 = true;
        bool isVersionKnown = true;
        try {
            isVersion3 = CorrectionFile::readUntilFrameLines(stream);
        } catch (const InvalidFormatException& exception) {
            isVersionKnown = false;
            if (!explainBodyStart(reasonOf(exception), stream)) return;
        }
        if (isVersionKnown) m_summary.fileVersion = isVersion3 ? 3 : 2;

        std::string_view line;
        while (getLine(stream, line)) {
            if (line.empty()) continue;
            if (!isVersionKnown) {
                Frame frame;
                isVersion3 = split(line, ';').size() < 2 || split(split(line, ';')[1], ',').size() != 6;
                isVersionKnown = true;
            }
            checkFrameLine(line, isVersion3, stream.lineNumber);
        }
        reportRepeated();
        checkFrames();
    }

    // Reports why no body was found; answers whether the stream now stands before frame lines all the same.
    bool explainBodyStart(const std::string& reason, LineStream& stream) {
        if (reason == "Body start could not be found.") {
            defect(0, "body-start",
                   "Body start could not be found: no line after the version line begins with \"frame;\"");
            return false;
        }
        if (reason == "Version is not supported.") {
            defect(stream.lineNumber, "version",
                   "Version is not supported: the line must read \"# OLCF Version 2\" or \"# OLCF Version 3\", without "
                   "anything after it");
        } else {
            std::string hint;
            LineStream lines(m_text);
            std::string_view line;
            while (hint.empty() && getLine(lines, line)) {
                if (line.find("OLCF") != std::string_view::npos)
                    hint = fmt::format("; line {} reads {}", lines.lineNumber, quoted(line));
            }
            defect(0, "version",
                   fmt::format("Version could not be found: no line begins with \"{}\"{}", versionPrefix, hint));
            stream = LineStream(m_text);
        }
        std::string_view line;
        while (getLine(stream, line)) {
            if (line.starts_with("frame;")) return true;
        }
        defect(0, "body-start", "Body start could not be found: no line begins with \"frame;\"");
        return false;
    }

    void checkFrameLine(std::string_view line, bool isVersion3, std::size_t lineNumber) {
        Frame frame;
        bool isAccepted = false;
        try {
            isAccepted = CorrectionFile::parseFrameLine(line, isVersion3, frame);
        } catch (const boost::bad_lexical_cast&) {
        }
        if (!isAccepted) {
            defect(lineNumber, "frame-line", explainFrameLine(line, isVersion3));
            return;
        }
        m_entries.push_back({static_cast<std::uint32_t>(frame.frameNumber), frames(frame.timecode), lineNumber});
        checkTimecode(frame, lineNumber);
        checkFit(frame, lineNumber);
    }

    static std::string explainFrameLine(std::string_view line, bool isVersion3) {
        std::vector<std::string> reasons;
        const std::vector<std::string_view> columns = split(line, ';');
        const std::size_t wanted = isVersion3 ? 10 : 9;
        if (columns.size() < wanted) {
            reasons.push_back(fmt::format("{} columns instead of {} or more", columns.size(), wanted));
        }
        std::int32_t number = 0;
        if (!Text::convertStrictly(columns[0], number)) {
            reasons.push_back(
                fmt::format("frame number {} is not a whole number within 0…2147483647", quoted(columns[0])));
        } else if (number < 0) {
            reasons.push_back(fmt::format("frame number {} is negative", number));
        }
        const std::size_t count = isVersion3 ? 7 : 6;
        const std::size_t first = isVersion3 ? 2 : 1;
        if (isVersion3 && columns.size() > 1) explainValues(reasons, "height", columns[1], count, 0.0f);
        if (columns.size() > first) explainValues(reasons, "shading", columns[first], count, 0.0f);
        if (columns.size() > first + 1) explainValues(reasons, "distortion", columns[first + 1], count, -100.0f);
        std::string text = fmt::format("frame {}: ", quoted(columns[0]));
        if (reasons.empty()) return text + "the line is refused";
        return text + fmt::format("{}", fmt::join(reasons, "; "));
    }

    static void explainValues(std::vector<std::string>& reasons, const char* name, std::string_view column,
                              std::size_t count, float lowest) {
        const std::vector<std::string_view> values = split(column, ',');
        if (values.size() != count) {
            reasons.push_back(fmt::format("{} {} values instead of {}{}", values.size(), name, count,
                                          values.size() == 2 * count ? " (decimals need a point, not a comma)" : ""));
            return;
        }
        for (std::size_t i = 0; i < values.size(); ++i) {
            float value = 0.0f;
            if (!Text::convertStrictly(values[i], value)) {
                reasons.push_back(fmt::format("{} {} is {}, not a number", name, i + 1, quoted(values[i])));
            } else if (!(value >= lowest && value <= 100.0f)) {
                reasons.push_back(fmt::format("{} {} is {}, outside {}…100", name, i + 1, quoted(values[i]), lowest));
            }
        }
    }

    // A timecode as the number of frames since 00:00:00:00.
    std::uint32_t frames(const std::string& timecode) const {
        if (!(m_header.tcFps > 0.0f)) return FrameEntry::noTimecode;
        try {
            return Timecode::Timecode(timecode.c_str(), m_header.tcFps) -
                   Timecode::Timecode("00:00:00:00", m_header.tcFps);
        } catch (const Timecode::InvalidTimecodeException&) {
            return FrameEntry::noTimecode;
        }
    }

    void checkTimecode(const Frame& frame, std::size_t lineNumber) {
        if (m_header.tcFps > 0.0f && m_entries.back().timecode == FrameEntry::noTimecode) {
            repeat("timecode", frame.frameNumber, lineNumber,
                   fmt::format("timecode {} is not valid at {} frames per second", quoted(frame.timecode),
                               m_header.tcFps));
        }
    }

    void checkFit(const Frame& frame, std::size_t lineNumber) {
        // Neighbouring frames mostly have the same values.
        const bool isSame = frame.heights == m_lastFrame.heights && frame.shading == m_lastFrame.shading &&
                            frame.radialDistortion == m_lastFrame.radialDistortion;
        if (!isSame) {
            m_lastProblems = fitProblems(frame, m_imageRadius);
            m_lastFrame = frame;
        }
        for (const FitProblem& problem : m_lastProblems)
            repeat(problem.kind, frame.frameNumber, lineNumber, problem.message);
    }

    void repeat(const std::string& kind, std::int32_t frameNumber, std::size_t lineNumber, const std::string& message) {
        Repeated& repeated = m_repeated[kind];
        if (repeated.count++ > 0) return;
        repeated.lineNumber = lineNumber;
        repeated.firstFrame = frameNumber;
        repeated.message = message;
    }

    void reportRepeated() {
        for (const auto& [kind, repeated] : m_repeated) {
            std::string message = fmt::format("frame {}: {}", repeated.firstFrame, repeated.message);
            if (repeated.count > 1) message += fmt::format(" (and {} more frames likewise)", repeated.count - 1);
            warning(repeated.lineNumber, kind, message);
        }
    }

    void checkFrames() {
        if (m_entries.empty()) {
            warning(0, "no-frames", "there is no readable frame line");
            return;
        }
        const auto unordered = std::adjacent_find(
            m_entries.begin(), m_entries.end(),
            [](const FrameEntry& left, const FrameEntry& right) { return right.frameNumber < left.frameNumber; });
        if (unordered != m_entries.end()) {
            warning((unordered + 1)->lineNumber, "unordered-frames",
                    fmt::format("frame {} comes after frame {}; the file is read all the same",
                                (unordered + 1)->frameNumber, unordered->frameNumber));
        }
        std::stable_sort(m_entries.begin(), m_entries.end(), [](const FrameEntry& left, const FrameEntry& right) {
            return left.frameNumber < right.frameNumber;
        });
        removeDuplicates();
        m_summary.frameCount = m_entries.size();
        m_summary.firstFrame = m_entries.front().frameNumber;
        m_summary.lastFrame = m_entries.back().frameNumber;
        checkGaps();
        checkTimecodeOrder();
        if (m_header.clipDurationFrames != 0 && m_header.clipDurationFrames != m_entries.size()) {
            warning(0, "frame-count",
                    fmt::format("the header gives the clip {} frames, the file has {}", m_header.clipDurationFrames,
                                m_entries.size()));
        }
    }

    // Keeps the last line of each frame number, as the parser does.
    void removeDuplicates() {
        std::size_t kept = 0;
        for (std::size_t i = 1; i < m_entries.size(); ++i) {
            if (m_entries[i].frameNumber == m_entries[kept].frameNumber) {
                warning(m_entries[i].lineNumber, "duplicate-frame",
                        fmt::format("frame {} occurs again; this line counts, not line {}", m_entries[i].frameNumber,
                                    m_entries[kept].lineNumber));
            } else {
                ++kept;
            }
            m_entries[kept] = m_entries[i];
        }
        m_entries.resize(kept + 1);
    }

    void checkGaps() {
        std::size_t gapCount = 0;
        const FrameEntry* before = nullptr;
        for (std::size_t i = 1; i < m_entries.size(); ++i) {
            if (m_entries[i].frameNumber == m_entries[i - 1].frameNumber + 1) continue;
            if (gapCount++ == 0) before = &m_entries[i - 1];
        }
        if (gapCount == 0) return;
        warning(before->lineNumber, "gap",
                fmt::format("no line for the frames after {} and before {}; they get the line of frame {}{}",
                            before->frameNumber, (before + 1)->frameNumber, before->frameNumber,
                            gapCount > 1 ? fmt::format(" (and {} more gaps)", gapCount - 1) : ""));
    }

    // A frame is found by timecode by counting from the first frame's, whatever its own line says.
    void checkTimecodeOrder() {
        const FrameEntry& first = m_entries.front();
        if (first.timecode == FrameEntry::noTimecode) return;
        std::size_t count = 0;
        const FrameEntry* wrong = nullptr;
        for (const FrameEntry& entry : m_entries) {
            if (entry.timecode == FrameEntry::noTimecode) continue;
            if (entry.timecode - first.timecode == entry.frameNumber - first.frameNumber) continue;
            if (count++ == 0) wrong = &entry;
        }
        if (count == 0) return;
        warning(wrong->lineNumber, "timecode-order",
                fmt::format("frame {}: its timecode does not lie {} frames after the first frame's; by timecode "
                            "another line is taken{}",
                            wrong->frameNumber, wrong->frameNumber - first.frameNumber,
                            count > 1 ? fmt::format(" (and {} more frames likewise)", count - 1) : ""));
    }

    const std::string& m_text;
    const FileCheck::Report& m_report;
    CheckSummary m_summary;
    std::vector<std::unique_ptr<std::string>> m_copies;
    bool m_hasHeaderStart = false;
    bool m_hasHeaderEnd = false;
    std::size_t m_headerStartLine = 0;
    Header m_header;
    float m_imageRadius = 0.0f; ///< mm; 0: unknown
    Frame m_lastFrame;
    std::vector<FitProblem> m_lastProblems;
    std::map<std::string, Repeated> m_repeated;
    std::vector<FrameEntry> m_entries;
};

} // namespace

FileCheck::FileCheck(Report report) : m_report(std::move(report)) {}

CheckSummary FileCheck::check(const std::string& path) {
    std::string text;
    try {
        CorrectionFile::Reader().readFile(path, text);
    } catch (const CorrectionFile::NotReadableException& exception) {
        m_report({Finding::Severity::Defect, 0, "unreadable", exception.what()});
        CheckSummary summary;
        summary.defectCount = 1;
        return summary;
    }
    return checkText(text);
}

CheckSummary FileCheck::checkText(const std::string& text) { return TextCheck(text, m_report).run(); }

} // namespace Host
