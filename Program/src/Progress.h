#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "Report/JobRecord.h"

namespace Program {

/// Shows a job's progress on the console.
///
/// - Bar: one line on a terminal, rewritten at most ten times a second: frames done, rate, time left, error count.
/// - Lines: a line of the same content at the first frame and then at most every ten seconds, for logs.
/// - Json: one JSON object per line and event, for programs: Docs/schemas/progress.json.
/// - None: nothing but notes and the messages of failed frames.
///
/// Failed frames are reported at once in every mode (in Json as their event), above the bar. Any thread may report.
class Progress {
public:
    enum class Mode { Bar, Lines, Json, None };

    /// Where text goes, and what time it is; replaced in tests.
    struct Output {
        std::function<void(const std::string&)> write; ///< receives whole lines, or a line that is to be rewritten
        std::function<double()> now;                   ///< s, from any start
        bool useColor = false;
        unsigned int columns = 80; ///< width of the terminal; the bar's line is cut to it
    };

    /// `auto`, `bar`, `lines`, `json` or `none`; `auto` is a bar on a terminal and lines elsewhere. Throws Failure
    /// (WrongUse) naming the text.
    static Mode parseMode(const std::string& text, bool isTerminal);

    /// For production: JSON to the standard output, all else to the error stream; colour on a terminal unless the
    /// environment has NO_COLOR or a dumb terminal; the steady clock.
    static Output standardOutput(Mode mode);

    Progress(Mode mode, std::size_t total, Output output);

    /// On the console, in a mode as parseMode has it. Throws Failure (WrongUse).
    Progress(const std::string& mode, std::size_t total);

    /// Shows the events of a job; this object outlives it.
    Tools::JobListener listener();

    void done(std::int32_t frame, const std::string& file);
    void skipped(std::int32_t frame, const std::string& file);
    /// `message` names file, frame and reason.
    void failed(std::int32_t frame, const std::string& file, const std::string& message);
    /// Something that the user should know; a line, or an event, of its own, in every mode.
    void note(const std::string& message);
    /// The last lines or event; once. `files`: the pattern of the frames' files; a bar and lines say where the frames
    /// are, if there are any. `unshaded`: layers and channels that a shading correction left unchanged.
    void end(const std::string& files = {}, const std::vector<std::string>& unshaded = {});

private:
    Progress(Mode mode, std::size_t total);
    void report(std::int32_t frame, const std::string& file, const char* state, const std::string& message);
    void show(bool isLast);
    std::string line() const;

    Mode m_mode;
    std::size_t m_total;
    Output m_output;
    double m_start;
    double m_lastShown;
    bool m_hasShown = false;
    std::size_t m_done = 0;
    std::size_t m_skipped = 0;
    std::size_t m_failed = 0;
    mutable std::mutex m_mutex; ///< guards everything above
};

/// A line on the error stream, after the program's name; nothing for an empty text.
void tell(const std::string& text);

/// Tells on the error stream which of so many frames failed, and what else there is to say once a signal has stopped
/// the job.
void tellEnd(const Tools::JobResult& result, std::size_t frames, const std::string& onInterruption);

/// "42 s", "3 min 05 s", "2 h 07 min" for a time in seconds.
std::string durationText(double seconds);

} // namespace Program
