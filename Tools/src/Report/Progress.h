#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

namespace Tools {

/// Reports a job's progress.
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

    void done(std::int32_t frame, const std::string& file);
    void skipped(std::int32_t frame, const std::string& file);
    /// `message` names file, frame and reason.
    void failed(std::int32_t frame, const std::string& file, const std::string& message);
    /// Something that the user should know; a line, or an event, of its own, in every mode.
    void note(const std::string& message);
    /// The last lines or event; once. `files`: the pattern of the frames' files; a bar and lines say where the frames
    /// are, if there are any. `unshaded`: layers and channels that a shading correction left unchanged.
    void end(const std::string& files = {}, const std::vector<std::string>& unshaded = {});

    std::size_t doneCount() const;
    std::size_t skippedCount() const;
    std::size_t failedCount() const;

private:
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

/// "42 s", "3 min 05 s", "2 h 07 min" for a time in seconds.
std::string durationText(double seconds);

} // namespace Tools
