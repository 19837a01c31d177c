#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "Report/Failure.h"

namespace Tools {

/// What a job tells while it runs: that a frame has come to its end, or something that the user should know.
struct JobEvent {
    enum class Kind {
        Done,
        Skipped, ///< finished already
        Failed,  ///< `text` names frame, file and reason
        Note,    ///< a sentence on the whole job; no frame and no file
    };

    Kind kind = Kind::Note;
    std::int32_t frame = 0;
    std::string file; ///< that is, or was to be, written; of a failed frame perhaps the one that was read
    std::string text;
};

/// Receives a job's events, on any of its threads, one at a time.
using JobListener = std::function<void(const JobEvent&)>;

/// What became of the frames of a job.
struct JobResult {
    struct FailedFrame {
        std::int32_t frame = 0;
        std::string text; ///< names frame, file and reason
        Failure::Kind kind = Failure::Kind::Correction;
    };

    std::size_t done = 0;
    std::size_t skipped = 0;
    std::vector<FailedFrame> failed; ///< ascending
    std::vector<std::int32_t> left;  ///< neither: the job was stopped before; in the job's order
    /// Layers and channels that a shading correction left unchanged.
    std::vector<std::string> unshaded;
    bool isInterrupted = false; ///< by a signal
};

/// Counts the frames of a job as they end, and tells each to a listener. Any thread.
class JobRecord {
public:
    /// The listener may be empty.
    JobRecord(std::vector<std::int32_t> frames, JobListener listener);

    void done(std::int32_t frame, const std::string& file);
    void skipped(std::int32_t frame, const std::string& file);
    /// The text names frame, file and reason (frameMessage).
    void failed(std::int32_t frame, const std::string& file, const std::string& text, Failure::Kind kind);
    void note(const std::string& text);

    /// As far as the job has come.
    JobResult result() const;

private:
    void end(const JobEvent& event);

    const std::vector<std::int32_t> m_frames;
    const JobListener m_listener;
    mutable std::mutex m_mutex; ///< guards what follows, and the listener
    std::map<std::int32_t, JobEvent::Kind> m_ended;
    std::map<std::int32_t, JobResult::FailedFrame> m_failed;
};

/// "Frame 7 (plate.0007.exr): …", or without the file where the text names it already, or there is none.
std::string frameMessage(std::int32_t frame, const std::string& file, const std::string& text);

} // namespace Tools
