#include "Report/JobRecord.h"

#include <fmt/format.h>

#include <utility>

namespace Tools {

JobRecord::JobRecord(std::vector<std::int32_t> frames, JobListener listener)
    : m_frames(std::move(frames)), m_listener(std::move(listener)) {}

void JobRecord::done(std::int32_t frame, const std::string& file) {
    const std::lock_guard lock(m_mutex);
    end({JobEvent::Kind::Done, frame, file, ""});
}

void JobRecord::skipped(std::int32_t frame, const std::string& file) {
    const std::lock_guard lock(m_mutex);
    end({JobEvent::Kind::Skipped, frame, file, ""});
}

void JobRecord::failed(std::int32_t frame, const std::string& file, const std::string& text, Failure::Kind kind) {
    const std::lock_guard lock(m_mutex);
    m_failed[frame] = {frame, text, kind};
    end({JobEvent::Kind::Failed, frame, file, text});
}

void JobRecord::note(const std::string& text) {
    const std::lock_guard lock(m_mutex);
    if (m_listener) m_listener({JobEvent::Kind::Note, 0, "", text});
}

void JobRecord::end(const JobEvent& event) {
    m_ended[event.frame] = event.kind;
    if (m_listener) m_listener(event);
}

JobResult JobRecord::result() const {
    const std::lock_guard lock(m_mutex);
    JobResult result;
    for (const std::int32_t frame : m_frames) {
        const auto ended = m_ended.find(frame);
        if (ended == m_ended.end()) {
            result.left.push_back(frame);
        } else if (ended->second == JobEvent::Kind::Done) {
            ++result.done;
        } else if (ended->second == JobEvent::Kind::Skipped) {
            ++result.skipped;
        }
    }
    for (const auto& [frame, failure] : m_failed) result.failed.push_back(failure);
    return result;
}

std::string frameMessage(std::int32_t frame, const std::string& file, const std::string& text) {
    return file.empty() || text.find(file) != std::string::npos ? fmt::format("Frame {}: {}", frame, text)
                                                                : fmt::format("Frame {} ({}): {}", frame, file, text);
}

} // namespace Tools
