#include "Render/ClipSurvey.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <mutex>
#include <utility>

#include "Frames/FrameRange.h"
#include "Image/DroppedPictures.h"
#include "Image/ImageError.h"
#include "Image/ParallelFor.h"

namespace Host {
namespace {

constexpr std::size_t mostEntries = 10;

/// Size and channels of a frame's parts; equal texts mean equal frames.
struct Shape {
    std::string size;
    std::string channels;
    bool operator<(const Shape& other) const { return std::tie(size, channels) < std::tie(other.size, other.channels); }
};

Shape shapeOf(const HostImage::Frame& header) {
    Shape shape;
    for (const HostImage::Part& part : header.parts) {
        std::vector<std::string> names;
        for (const HostImage::Channel& channel : part.channels) names.push_back(channel.name);
        std::sort(names.begin(), names.end());
        const char* const separator = shape.size.empty() ? "" : " + ";
        shape.size += fmt::format("{}{} x {} px", separator, part.displayWindow.width(), part.displayWindow.height());
        shape.channels += fmt::format("{}{}", separator, fmt::join(names, " "));
    }
    return shape;
}

using FramesOfShape = std::map<Shape, std::vector<std::int32_t>>;

/// Only what differs is told: sizes, channels, or both.
std::string changeText(const std::string& clip, const FramesOfShape& shapes) {
    const auto differs = [&](std::string Shape::*text) {
        return std::any_of(shapes.begin(), shapes.end(),
                           [&](const auto& entry) { return entry.first.*text != shapes.begin()->first.*text; });
    };
    std::vector<std::pair<Shape, std::vector<std::int32_t>>> inOrder(shapes.begin(), shapes.end());
    std::sort(inOrder.begin(), inOrder.end(),
              [](const auto& a, const auto& b) { return a.second.front() < b.second.front(); });
    std::vector<std::string> entries;
    for (const auto& [shape, frames] : inOrder) {
        std::string text = differs(&Shape::size) ? shape.size : "";
        if (differs(&Shape::channels)) text += (text.empty() ? "" : ", ") + shape.channels;
        entries.push_back(fmt::format("{}: {}", FrameRange::string(frames), text));
        if (entries.size() == mostEntries) break;
    }
    const std::size_t others = shapes.size() - entries.size();
    const std::string rest = others == 0 ? "" : fmt::format("; and {} other{}", others, others == 1 ? "" : "s");
    return fmt::format("Size or channels change within the clip \"{}\": {}{}.", clip, fmt::join(entries, "; "), rest);
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

ClipSurvey ClipSurvey::of(const Clip& clip, const std::vector<std::int32_t>& frames, unsigned int threads,
                          const std::function<bool()>& mustStop) {
    ClipSurvey survey;
    if (clip.isMovie()) return survey;
    const std::string name = clip.files().pattern.string();
    std::vector<std::int32_t> existing;
    for (const std::int32_t frame : frames)
        if (clip.fileOf(frame)) existing.push_back(frame);

    std::mutex access;
    FramesOfShape shapes;
    std::map<std::string, std::vector<std::int32_t>> dropped;
    HostImage::parallelFor(threads, existing.size(), [&](HostImage::WorkQueue& queue) {
        for (std::size_t index = 0; !mustStop() && queue.next(index);) {
            try {
                const HostImage::Frame header = clip.readHeader(existing[index]);
                const Shape shape = shapeOf(header);
                const std::lock_guard<std::mutex> lock(access);
                shapes[shape].push_back(existing[index]);
                for (const std::string& what : HostImage::droppedPictures(header))
                    dropped[what].push_back(existing[index]);
            } catch (const HostImage::ImageError&) {
                // Told when the frame's turn comes.
            }
        }
    });
    for (auto& [shape, own] : shapes) std::sort(own.begin(), own.end());
    if (shapes.size() > 1) survey.change = changeText(name, shapes);
    for (auto& [what, own] : dropped) {
        std::sort(own.begin(), own.end());
        survey.droppings.push_back(
            fmt::format("Only the first picture of each file of the clip \"{}\" is read; dropped: {} (frames {}).",
                        name, what, FrameRange::string(own)));
    }
    return survey;
}

} // namespace Host
