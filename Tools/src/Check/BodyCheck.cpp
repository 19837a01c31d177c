#include "Check/BodyCheck.h"

#include <fmt/format.h>

#include <algorithm>
#include <boost/lexical_cast/bad_lexical_cast.hpp>

#include "Check/Findings.h"
#include "CorrectionFile/Parser/FrameLine.h"
#include "CorrectionFile/Parser/InvalidFormatException.h"
#include "Lens/LensCurves.h"
#include "Text/StrictConversion.h"
#include "Timecode/Timecode.h"

namespace Tools {

using CorrectionData::Frame;
using CorrectionFile::getLine;
using CorrectionFile::InvalidFormatException;
using CorrectionFile::LineStream;

namespace {

constexpr std::string_view versionPrefix = "# OLCF Version ";

/// How many more there are than the one that a finding names; empty for none.
std::string furtherText(std::size_t count, const char* what) {
    if (count < 2) return {};
    return fmt::format(" (and {} more {}{})", count - 1, what, count == 2 ? "" : "s");
}

void explainValues(std::vector<std::string>& reasons, const char* name, std::string_view column, std::size_t count,
                   float lowest) {
    const std::vector<std::string_view> values = split(column, ',');
    if (values.size() != count) {
        reasons.push_back(fmt::format("{} {} values instead of {}{}", values.size(), name, count,
                                      values.size() == 2 * count ? " (use a decimal point, not a comma)" : ""));
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

std::string explainFrameLine(std::string_view line, bool isVersion3) {
    std::vector<std::string> reasons;
    const std::vector<std::string_view> columns = split(line, ';');
    const std::size_t wanted = isVersion3 ? 10 : 9;
    if (columns.size() < wanted) {
        reasons.push_back(fmt::format("{} columns instead of {} or more", columns.size(), wanted));
    }
    std::int32_t number = 0;
    if (!Text::convertStrictly(columns[0], number)) {
        reasons.push_back(fmt::format("frame number {} is not a whole number within 0…2147483647", quoted(columns[0])));
    } else if (number < 0) {
        reasons.push_back(fmt::format("frame number {} is negative", number));
    }
    const std::size_t count = isVersion3 ? 7 : 6;
    const std::size_t first = isVersion3 ? 2 : 1;
    if (isVersion3 && columns.size() > 1) explainValues(reasons, "height", columns[1], count, 0.0f);
    if (columns.size() > first) explainValues(reasons, "shading", columns[first], count, 0.0f);
    if (columns.size() > first + 1) explainValues(reasons, "distortion", columns[first + 1], count, -100.0f);
    std::string text = fmt::format("frame {}: ", quoted(columns[0]));
    if (reasons.empty()) return text + "the line is rejected";
    return text + fmt::format("{}", fmt::join(reasons, "; "));
}

} // namespace

BodyCheck::BodyCheck(const std::string& text, const HeaderCheck& header, Findings& findings, CheckSummary& summary)
    : m_text(text),
      m_header(header.header()),
      m_imageRadius(header.imageRadius()),
      m_findings(findings),
      m_summary(summary) {
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
bool BodyCheck::explainBodyStart(const std::string& reason, LineStream& stream) {
    if (reason == "Body start could not be found.") {
        m_findings.defect(0, "body-start",
                          "Body start could not be found: no line after the version line begins with \"frame;\"");
        return false;
    }
    if (reason == "Version is not supported.") {
        m_findings.defect(stream.lineNumber, "version",
                          "Version is not supported: the line must read \"# OLCF Version 2\" or \"# OLCF Version 3\", "
                          "with nothing after it");
    } else {
        std::string hint;
        LineStream lines(m_text);
        std::string_view line;
        while (hint.empty() && getLine(lines, line)) {
            if (line.find("OLCF") != std::string_view::npos)
                hint = fmt::format("; line {} reads {}", lines.lineNumber, quoted(line));
        }
        m_findings.defect(0, "version",
                          fmt::format("Version could not be found: no line begins with \"{}\"{}", versionPrefix, hint));
        stream = LineStream(m_text);
    }
    std::string_view line;
    while (getLine(stream, line)) {
        if (line.starts_with("frame;")) return true;
    }
    m_findings.defect(0, "body-start", "Body start could not be found: no line begins with \"frame;\"");
    return false;
}

void BodyCheck::checkFrameLine(std::string_view line, bool isVersion3, std::size_t lineNumber) {
    Frame frame;
    bool isAccepted = false;
    try {
        isAccepted = CorrectionFile::parseFrameLine(line, isVersion3, frame);
    } catch (const boost::bad_lexical_cast&) {
    }
    if (!isAccepted) {
        m_findings.defect(lineNumber, "frame-line", explainFrameLine(line, isVersion3));
        return;
    }
    m_entries.push_back({static_cast<std::uint32_t>(frame.frameNumber), frames(frame.timecode),
                         static_cast<std::uint32_t>(lineNumber)});
    checkTimecode(frame, lineNumber);
    checkFit(frame, lineNumber);
}

// A timecode as the number of frames since 00:00:00:00.
std::uint32_t BodyCheck::frames(const std::string& timecode) const {
    if (!(m_header.tcFps > 0.0f)) return FrameEntry::noTimecode;
    try {
        return Timecode::Timecode(timecode.c_str(), m_header.tcFps) - Timecode::Timecode("00:00:00:00", m_header.tcFps);
    } catch (const Timecode::InvalidTimecodeException&) {
        return FrameEntry::noTimecode;
    }
}

void BodyCheck::checkTimecode(const Frame& frame, std::size_t lineNumber) {
    if (m_header.tcFps > 0.0f && m_entries.back().timecode == FrameEntry::noTimecode) {
        repeat("timecode", frame.frameNumber, lineNumber,
               fmt::format("timecode {} is not valid at {} frames per second", quoted(frame.timecode), m_header.tcFps));
    }
}

void BodyCheck::checkFit(const Frame& frame, std::size_t lineNumber) {
    // Neighbouring frames mostly have the same values.
    if (!haveEqualValues(frame, m_lastFrame)) {
        m_lastProblems = fitProblems(frame, m_imageRadius);
        m_lastFrame = frame;
    }
    for (const FitProblem& problem : m_lastProblems)
        repeat(problem.kind, frame.frameNumber, lineNumber, problem.message);
}

void BodyCheck::repeat(const std::string& kind, std::int32_t frameNumber, std::size_t lineNumber,
                       const std::string& message) {
    Repeated& repeated = m_repeated[kind];
    if (repeated.count++ > 0) return;
    repeated.lineNumber = lineNumber;
    repeated.firstFrame = frameNumber;
    repeated.message = message;
}

void BodyCheck::reportRepeated() {
    for (const auto& [kind, repeated] : m_repeated) {
        const std::string message = fmt::format("frame {}: {}", repeated.firstFrame, repeated.message);
        m_findings.warning(repeated.lineNumber, kind, message + furtherText(repeated.count, "frame"));
    }
}

void BodyCheck::checkFrames() {
    if (m_entries.empty()) {
        m_findings.warning(0, "no-frames", "there is no readable frame line");
        return;
    }
    const auto unordered = std::adjacent_find(
        m_entries.begin(), m_entries.end(),
        [](const FrameEntry& left, const FrameEntry& right) { return right.frameNumber < left.frameNumber; });
    if (unordered != m_entries.end()) {
        m_findings.warning((unordered + 1)->lineNumber, "unordered-frames",
                           fmt::format("frame {} comes after frame {}; the file is still accepted",
                                       (unordered + 1)->frameNumber, unordered->frameNumber));
        // Only here, since it takes half the memory of the entries again.
        std::stable_sort(m_entries.begin(), m_entries.end(), [](const FrameEntry& left, const FrameEntry& right) {
            return left.frameNumber < right.frameNumber;
        });
    }
    removeDuplicates();
    m_summary.frameCount = m_entries.size();
    m_summary.firstFrame = m_entries.front().frameNumber;
    m_summary.lastFrame = m_entries.back().frameNumber;
    checkGaps();
    checkTimecodeOrder();
    if (m_header.clipDurationFrames != 0 && m_header.clipDurationFrames != m_entries.size()) {
        m_findings.warning(
            0, "frame-count",
            fmt::format("the header states {} frames, the file has {}", m_header.clipDurationFrames, m_entries.size()));
    }
}

// Keeps the last line of each frame number, as the parser does.
void BodyCheck::removeDuplicates() {
    std::size_t kept = 0;
    for (std::size_t i = 1; i < m_entries.size(); ++i) {
        if (m_entries[i].frameNumber == m_entries[kept].frameNumber) {
            m_findings.warning(m_entries[i].lineNumber, "duplicate-frame",
                               fmt::format("frame {} is repeated; this line replaces line {}", m_entries[i].frameNumber,
                                           m_entries[kept].lineNumber));
        } else {
            ++kept;
        }
        m_entries[kept] = m_entries[i];
    }
    m_entries.resize(kept + 1);
}

void BodyCheck::checkGaps() {
    std::size_t gapCount = 0;
    const FrameEntry* before = nullptr;
    for (std::size_t i = 1; i < m_entries.size(); ++i) {
        if (m_entries[i].frameNumber == m_entries[i - 1].frameNumber + 1) continue;
        if (gapCount++ == 0) before = &m_entries[i - 1];
    }
    if (gapCount == 0) return;
    m_findings.warning(
        before->lineNumber, "gap",
        fmt::format("no line for the frames after {} and before {}; they use the line of frame {}{}",
                    before->frameNumber, (before + 1)->frameNumber, before->frameNumber, furtherText(gapCount, "gap")));
}

// A frame is found by timecode by counting from the first frame's, whatever its own line says.
void BodyCheck::checkTimecodeOrder() {
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
    m_findings.warning(
        wrong->lineNumber, "timecode-order",
        fmt::format("frame {}: its timecode is not {} frames after the first frame's; a look-up by "
                    "timecode uses another line{}",
                    wrong->frameNumber, wrong->frameNumber - first.frameNumber, furtherText(count, "frame")));
}

} // namespace Tools
