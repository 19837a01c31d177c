#include "Progress.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <string_view>

#include "Clip/FrameRange.h"
#include "Report/Failure.h"
#include "Report/Json.h"
#include "Report/PrintableText.h"

namespace Program {

using namespace Tools;

namespace {

constexpr double secondsBetweenBars = 0.1;
constexpr double secondsBetweenLines = 10.0;
constexpr const char* red = "\x1b[31m";
constexpr const char* plain = "\x1b[0m";
constexpr const char* clearLine = "\r\x1b[K";

/// Three digits, or all of a larger number.
std::string rateText(double rate) {
    if (rate >= 100.0) return fmt::format("{:.0f}", rate);
    return rate < 0.001 ? "less than 0.001" : fmt::format("{:.3g}", rate);
}

} // namespace

Progress::Mode Progress::parseMode(const std::string& text, bool isTerminal) {
    if (text == "auto") return isTerminal ? Mode::Bar : Mode::Lines;
    if (text == "bar") return Mode::Bar;
    if (text == "lines") return Mode::Lines;
    if (text == "json") return Mode::Json;
    if (text == "none") return Mode::None;
    refuse(fmt::format("Progress \"{}\" is not one of auto, bar, lines, json, none.", text));
}

Progress::Output Progress::standardOutput(Mode mode) {
    std::FILE* const stream = mode == Mode::Json ? stdout : stderr;
    const char* const terminal = std::getenv("TERM");
    const char* const noColor = std::getenv("NO_COLOR");
    const bool isTerminal = isatty(fileno(stream)) != 0 && !(terminal && std::string_view(terminal) == "dumb");
    Output output;
    output.write = [stream](const std::string& text) {
        std::fwrite(text.data(), 1, text.size(), stream);
        std::fflush(stream);
    };
    output.now = [] {
        return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
    };
    output.useColor = isTerminal && !(noColor && *noColor);
    winsize size = {};
    if (ioctl(fileno(stream), TIOCGWINSZ, &size) == 0 && size.ws_col > 0) output.columns = size.ws_col;
    return output;
}

Progress::Progress(Mode mode, std::size_t total, Output output)
    : m_mode(mode), m_total(total), m_output(std::move(output)), m_start(m_output.now()), m_lastShown(m_start) {
    if (m_mode == Mode::Json) {
        m_output.write(jsonLine({{"event", "start"}, {"version", 1}, {"frames", m_total}}) + '\n');
    }
}

Progress::Progress(const std::string& mode, std::size_t total)
    : Progress(parseMode(mode, isatty(STDERR_FILENO) == 1), total) {}

Progress::Progress(Mode mode, std::size_t total) : Progress(mode, total, standardOutput(mode)) {}

JobListener Progress::listener() {
    return [this](const JobEvent& event) {
        switch (event.kind) {
            case JobEvent::Kind::Done:
                return done(event.frame, event.file);
            case JobEvent::Kind::Skipped:
                return skipped(event.frame, event.file);
            case JobEvent::Kind::Failed:
                return failed(event.frame, event.file, event.text);
            case JobEvent::Kind::Note:
                return note(event.text);
        }
    };
}

void Progress::done(std::int32_t frame, const std::string& file) {
    const std::lock_guard lock(m_mutex);
    ++m_done;
    report(frame, file, "done", "");
}

void Progress::skipped(std::int32_t frame, const std::string& file) {
    const std::lock_guard lock(m_mutex);
    ++m_skipped;
    report(frame, file, "skipped", "");
}

void Progress::failed(std::int32_t frame, const std::string& file, const std::string& message) {
    const std::lock_guard lock(m_mutex);
    ++m_failed;
    report(frame, file, "failed", message);
}

void Progress::note(const std::string& message) {
    const std::lock_guard lock(m_mutex);
    if (m_mode == Mode::Json) return m_output.write(jsonLine({{"event", "note"}, {"message", message}}) + '\n');
    const std::string bar = m_mode == Mode::Bar && m_hasShown ? clearLine : "";
    m_output.write(bar + "lenscorrect: " + printableText(message) + '\n');
}

void Progress::end(const std::string& files, const std::vector<std::string>& unshaded) {
    const std::lock_guard lock(m_mutex);
    if (m_mode == Mode::Json) {
        nlohmann::ordered_json event{{"event", "end"},     {"done", m_done},   {"skipped", m_skipped},
                                     {"failed", m_failed}, {"total", m_total}, {"seconds", m_output.now() - m_start}};
        if (!unshaded.empty()) event["unshaded"] = unshaded;
        m_output.write(jsonLine(event) + '\n');
        return;
    }
    if (m_mode != Mode::None) {
        show(true);
        if (!files.empty() && m_done + m_skipped > 0) m_output.write("Frames: " + printableText(files) + '\n');
    }
    if (!unshaded.empty()) {
        m_output.write(printableText(fmt::format(
            "Not corrected for shading: {} (use --shading-layers to choose layers)\n", fmt::join(unshaded, ", "))));
    }
}

void Progress::report(std::int32_t frame, const std::string& file, const char* state, const std::string& message) {
    if (m_mode == Mode::Json) {
        nlohmann::ordered_json event{{"event", "frame"}, {"frame", frame}, {"state", state}, {"file", file}};
        if (!message.empty()) event["message"] = message;
        event.update({{"done", m_done}, {"skipped", m_skipped}, {"failed", m_failed}, {"total", m_total}});
        m_output.write(jsonLine(event) + '\n');
        return;
    }
    if (!message.empty()) {
        const std::string bar = m_mode == Mode::Bar && m_hasShown ? clearLine : "";
        m_output.write(bar + (m_output.useColor ? red : "") + printableText(message) +
                       (m_output.useColor ? plain : "") + '\n');
    }
    const bool isLast = m_done + m_skipped + m_failed >= m_total; // end() shows that one
    if (m_mode != Mode::None && !isLast) show(false);
}

void Progress::show(bool isLast) {
    const double now = m_output.now();
    const double interval = m_mode == Mode::Bar ? secondsBetweenBars : secondsBetweenLines;
    if (!isLast && m_hasShown && now - m_lastShown < interval) return;
    m_lastShown = now;
    m_hasShown = true;
    std::string text = line();
    if (m_mode == Mode::Bar) {
        // The last column stays free: some terminals break the line when it is written.
        if (m_output.columns > 1 && text.size() >= m_output.columns) text.resize(m_output.columns - 1);
        text = clearLine + text;
    }
    m_output.write(text + (m_mode == Mode::Lines || isLast ? "\n" : ""));
}

std::string Progress::line() const {
    const std::size_t finished = m_done + m_skipped + m_failed;
    const double elapsed = m_output.now() - m_start;
    // The rate is that of frames that were worked on; skipping is free and would promise too much.
    const std::size_t worked = m_done + m_failed;
    std::string text =
        fmt::format("{} of {} frames ({} %)", finished, m_total, m_total ? finished * 100 / m_total : 100);
    if (worked > 0 && elapsed > 0.0) {
        const double rate = static_cast<double>(worked) / elapsed;
        text += fmt::format(", {} frames/s", rateText(rate));
        if (finished < m_total)
            text += fmt::format(", {} left", durationText(static_cast<double>(m_total - finished) / rate));
    }
    if (m_skipped > 0) text += fmt::format(", {} skipped", m_skipped);
    text += fmt::format(", {} {}", m_failed, m_failed == 1 ? "error" : "errors");
    return text;
}

void tell(const std::string& text) {
    if (!text.empty()) fmt::print(stderr, "lenscorrect: {}\n", printableText(text));
}

void tellEnd(const JobResult& result, std::size_t frames, const std::string& onInterruption) {
    if (!result.failed.empty()) {
        std::vector<std::int32_t> failed;
        for (const JobResult::FailedFrame& frame : result.failed) failed.push_back(frame.frame);
        tell(fmt::format("{} of {} frames failed: {}", failed.size(), frames, FrameRange::string(failed)));
    }
    if (result.isInterrupted) tell(onInterruption);
}

std::string durationText(double seconds) {
    const auto whole = static_cast<std::uint64_t>(std::min(std::max(std::ceil(seconds), 0.0), 1e15));
    if (whole < 60) return fmt::format("{} s", whole);
    if (whole < 3600) return fmt::format("{} min {:02} s", whole / 60, whole % 60);
    return fmt::format("{} h {:02} min", whole / 3600, whole % 3600 / 60);
}

} // namespace Program
