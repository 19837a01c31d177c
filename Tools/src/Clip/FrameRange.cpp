#include "Clip/FrameRange.h"

#include <fmt/format.h>

#include <charconv>
#include <unordered_set>

#include "Report/Failure.h"

namespace Tools {
namespace {

[[noreturn]] void refuseRange(const std::string& text, const std::string& reason) {
    refuse(
        fmt::format("Frame range \"{}\" is not understood: {} Examples: 1001, 1001-1100, 1001-1100x2, "
                    "1001-1010,1020.",
                    text, reason));
}

/// Reads a number at the beginning of `rest` and takes it away from there. The first sign belongs to the number.
std::int32_t takeNumber(const std::string& whole, std::string_view& rest) {
    std::int32_t number = 0;
    const char* const end = rest.data() + rest.size();
    const auto [after, error] = std::from_chars(rest.data(), end, number);
    if (error == std::errc::result_out_of_range)
        refuseRange(whole, fmt::format("a number in \"{}\" is too large.", rest));
    if (error != std::errc()) {
        refuseRange(whole,
                    rest.empty() ? "a number is missing at its end." : fmt::format("\"{}\" is not a number.", rest));
    }
    rest.remove_prefix(static_cast<std::size_t>(after - rest.data()));
    return number;
}

/// Appends start, start + step … up to end, a part of the whole text. 64-bit, so that neither the last step nor the
/// count overflows.
void append(std::vector<std::int32_t>& frames, std::int64_t start, std::int64_t end, std::int64_t step,
            const std::string& whole, std::size_t most = FrameRange::maximumCount) {
    const std::int64_t count = (end - start) / step + 1;
    if (count + static_cast<std::int64_t>(frames.size()) > static_cast<std::int64_t>(most)) {
        refuse(fmt::format("Frame range \"{}\" has more than {} frames; split the job.", whole, most));
    }
    for (std::int64_t index = 0; index < count; ++index) {
        frames.push_back(static_cast<std::int32_t>(start + index * step));
    }
}

/// One piece between commas of the whole text: a number, a range, or a range with a step.
void appendPiece(std::vector<std::int32_t>& frames, const std::string& piece, const std::string& whole,
                 std::size_t most) {
    std::string_view rest = piece;
    const std::int32_t start = takeNumber(piece, rest);
    if (rest.empty()) {
        append(frames, start, start, 1, whole, most);
        return;
    }
    if (rest.front() != '-') refuseRange(piece, fmt::format("\"{}\" is not expected there.", rest));
    rest.remove_prefix(1);
    const std::int32_t end = takeNumber(piece, rest);
    std::int64_t step = end < start ? -1 : 1;
    if (!rest.empty()) {
        if (rest.front() != 'x') refuseRange(piece, fmt::format("\"{}\" is not expected there.", rest));
        rest.remove_prefix(1);
        const std::int64_t written = takeNumber(piece, rest);
        if (!rest.empty()) refuseRange(piece, fmt::format("\"{}\" is not expected there.", rest));
        if (written == 0) refuseRange(piece, "a step of 0 never reaches the end.");
        if (written < 0 && end > start) refuseRange(piece, "a negative step moves away from the end.");
        step = end < start && written > 0 ? -written : written;
        if (start == end) step = 1;
    }
    append(frames, start, end, step, whole, most);
}

std::vector<std::int32_t> withoutRepeats(const std::vector<std::int32_t>& frames) {
    std::vector<std::int32_t> result;
    std::unordered_set<std::int32_t> seen;
    result.reserve(frames.size());
    for (const std::int32_t frame : frames) {
        if (seen.insert(frame).second) result.push_back(frame);
    }
    return result;
}

} // namespace

FrameRange FrameRange::parse(const std::string& text, std::size_t most) {
    if (text.find(':') != std::string::npos) {
        refuse(
            fmt::format("Frame range \"{}\" uses \":\", which some programs read as a step (1-10:2 is 1, 3, 5 …) "
                        "and others as a staggered order (all of 1-10, the coarse ones first). Write a step as "
                        "1-10x2.",
                        text));
    }
    std::vector<std::int32_t> frames;
    std::size_t begin = 0;
    bool commaIsOpen = true; // a comma needs a piece on either side; blanks do not
    while (begin <= text.size()) {
        const std::size_t end = std::min(text.find_first_of(", \t", begin), text.size());
        const bool atComma = end < text.size() && text[end] == ',';
        if (end > begin) {
            appendPiece(frames, text.substr(begin, end - begin), text, most);
            commaIsOpen = false;
        }
        if (commaIsOpen && (atComma || end == text.size())) {
            refuseRange(text, text.empty() ? "it is empty." : "there is nothing between two commas.");
        }
        if (atComma) commaIsOpen = true;
        begin = end + 1;
    }
    FrameRange range;
    range.m_frames = withoutRepeats(frames);
    return range;
}

FrameRange FrameRange::fromStartToEnd(std::int32_t start, std::int32_t end, std::int32_t step) {
    const std::string text = fmt::format("{}-{}x{}", start, end, step);
    if (step == 0) refuseRange(text, "a step of 0 never reaches the end.");
    if ((step > 0 && end < start) || (step < 0 && end > start)) refuseRange(text, "the step moves away from the end.");
    FrameRange range;
    append(range.m_frames, start, end, step, text);
    return range;
}

std::string FrameRange::string() const { return string(m_frames); }

std::string FrameRange::string(const std::vector<std::int32_t>& frames) {
    std::string text;
    for (std::size_t first = 0; first < frames.size();) {
        std::size_t last = first;
        std::int64_t step = 0;
        while (last + 1 < frames.size()) {
            const std::int64_t next = std::int64_t(frames[last + 1]) - frames[last];
            if (last > first && next != step) break;
            step = next;
            ++last;
        }
        // Two frames are a range only when they are neighbours; otherwise the second may begin a longer one.
        if (last == first + 1 && step != 1 && step != -1) last = first;
        if (!text.empty()) text += ',';
        text += fmt::format("{}", frames[first]);
        if (last > first) text += fmt::format("-{}", frames[last]);
        if (last > first && step != 1 && step != -1) text += fmt::format("x{}", step < 0 ? -step : step);
        first = last + 1;
    }
    return text;
}

} // namespace Tools
