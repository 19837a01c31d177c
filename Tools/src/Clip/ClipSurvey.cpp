#include "Clip/ClipSurvey.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <utility>

#include "Clip/FrameRange.h"
#include "DroppedPictures.h"
#include "ParallelFor.h"

namespace Tools {
namespace {

constexpr std::size_t mostEntries = 10;

std::string listOf(const std::set<std::int32_t>& frames) {
    return FrameRange::string(std::vector<std::int32_t>(frames.begin(), frames.end()));
}

} // namespace

std::string gapsBetween(const std::map<std::int32_t, std::string>& files) {
    std::vector<std::string> gaps;
    std::size_t count = 0;
    for (auto next = files.begin(), frame = files.empty() ? next : next++; next != files.end(); frame = next++) {
        const std::int64_t first = std::int64_t{frame->first} + 1;
        const std::int64_t last = std::int64_t{next->first} - 1;
        if (first > last || ++count > mostEntries) continue;
        gaps.push_back(first == last ? fmt::format("{}", first) : fmt::format("{}-{}", first, last));
    }
    const std::size_t others = count - gaps.size();
    const std::string rest = others == 0 ? "" : fmt::format(" and {} more gap{}", others, others == 1 ? "" : "s");
    return fmt::format("{}{}", fmt::join(gaps, ", "), rest);
}

std::string missingFrames(const Clip& clip, const std::vector<std::int32_t>& frames, bool areAsked) {
    std::vector<std::int32_t> missing;
    for (const std::int32_t frame : frames)
        if (!clip.fileOf(frame)) missing.push_back(frame);
    std::sort(missing.begin(), missing.end());
    const std::string gaps = areAsked ? FrameRange::string(missing) : gapsBetween(clip.frames());
    if (gaps.empty()) return {};
    return fmt::format("Frames are missing in the clip \"{}\": {}.", clip.files().pattern.string(), gaps);
}

ClipSurvey::ClipSurvey(const Clip& clip, const std::vector<std::int32_t>& frames)
    : m_clip(clip), m_jobFrames(frames.begin(), frames.end()) {}

void ClipSurvey::keep(const std::vector<std::int32_t>& frames) { m_toKeep.insert(frames.begin(), frames.end()); }

std::shared_ptr<const Image::Frame> ClipSurvey::header(std::int32_t frame) {
    {
        const std::lock_guard<std::mutex> lock(m_access);
        if (const auto kept = m_kept.find(frame); kept != m_kept.end()) return kept->second;
        if (const auto error = m_errors.find(frame); error != m_errors.end()) std::rethrow_exception(error->second);
    }
    std::shared_ptr<const Image::Frame> header;
    try {
        header = std::make_shared<const Image::Frame>(m_clip.readHeader(frame));
    } catch (const std::exception&) {
        const std::lock_guard<std::mutex> lock(m_access);
        m_errors[frame] = std::current_exception();
        throw;
    }
    const std::lock_guard<std::mutex> lock(m_access);
    m_read.insert(frame);
    if (m_toKeep.contains(frame)) m_kept[frame] = header;
    if (!m_jobFrames.contains(frame)) return header;
    m_shapes[shapeOf(*header)].insert(frame);
    for (const std::string& what : Image::droppedPictures(*header)) m_dropped[what].insert(frame);
    return header;
}

bool ClipSurvey::isRead(std::int32_t frame) const {
    const std::lock_guard<std::mutex> lock(m_access);
    return m_read.contains(frame) || m_errors.contains(frame);
}

void ClipSurvey::read(const std::vector<std::int32_t>& frames, unsigned int threads,
                      const std::function<bool()>& mustStop, const Use& use) {
    Image::parallelFor(threads, frames.size(), [&](Image::WorkQueue& queue) {
        for (std::size_t index = 0; !mustStop() && queue.next(index);) {
            const std::int32_t frame = frames[index];
            if (!use && isRead(frame)) continue;
            try {
                const std::shared_ptr<const Image::Frame> own = header(frame);
                const std::lock_guard<std::mutex> lock(m_use);
                if (use) use(frame, *own);
            } catch (const std::exception&) {
                // Told when the frame's turn comes.
            }
        }
    });
}

ClipSurvey::Shape ClipSurvey::shapeOf(const Image::Frame& header) {
    Shape shape;
    for (const Image::Part& part : header.parts) {
        std::vector<std::string> names;
        for (const Image::Channel& channel : part.channels) names.push_back(channel.name);
        std::sort(names.begin(), names.end());
        const char* const separator = shape.size.empty() ? "" : " + ";
        shape.size += fmt::format("{}{} x {} px", separator, part.displayWindow.width(), part.displayWindow.height());
        shape.channels += fmt::format("{}{}", separator, fmt::join(names, " "));
    }
    return shape;
}

/// Only what differs is told: sizes, channels, or both.
std::string ClipSurvey::change() const {
    const std::lock_guard<std::mutex> lock(m_access);
    if (m_shapes.size() < 2) return {};
    const auto differs = [&](std::string Shape::*text) {
        return std::any_of(m_shapes.begin(), m_shapes.end(),
                           [&](const auto& entry) { return entry.first.*text != m_shapes.begin()->first.*text; });
    };
    std::vector<std::pair<Shape, Frames>> inOrder(m_shapes.begin(), m_shapes.end());
    std::sort(inOrder.begin(), inOrder.end(),
              [](const auto& a, const auto& b) { return *a.second.begin() < *b.second.begin(); });
    std::vector<std::string> entries;
    for (const auto& [shape, frames] : inOrder) {
        std::string text = differs(&Shape::size) ? shape.size : "";
        if (differs(&Shape::channels)) text += (text.empty() ? "" : ", ") + shape.channels;
        entries.push_back(fmt::format("{}: {}", listOf(frames), text));
        if (entries.size() == mostEntries) break;
    }
    const std::size_t others = m_shapes.size() - entries.size();
    const std::string rest = others == 0 ? "" : fmt::format("; and {} other{}", others, others == 1 ? "" : "s");
    return fmt::format("Size or channels change within the clip \"{}\": {}{}.", m_clip.files().pattern.string(),
                       fmt::join(entries, "; "), rest);
}

std::vector<std::string> ClipSurvey::droppings() const {
    const std::lock_guard<std::mutex> lock(m_access);
    std::vector<std::string> texts;
    for (const auto& [what, frames] : m_dropped)
        texts.push_back(
            fmt::format("Only the first picture of each file of the clip \"{}\" is read; dropped: {} (frames {}).",
                        m_clip.files().pattern.string(), what, listOf(frames)));
    return texts;
}

} // namespace Tools
