#pragma once

#include <compare>
#include <cstdint>
#include <exception>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "Clip/Clip.h"

namespace Tools {

/// A sentence on the frames that are missing in a sequence; empty if none is. `frames` are those of the job in its
/// order: with `areAsked` those of them that the clip lacks, otherwise the gaps between its first and its last frame.
std::string missingFrames(const Clip& clip, const std::vector<std::int32_t>& frames, bool areAsked);

/// What is known from the headers of a clip before it is corrected. Each file is opened once for it, whoever asks
/// first: opening is slow over a network, and costs a process where files are decoded in one.
///
/// Any thread may call, but for keep.
class ClipSurvey {
public:
    /// `frames`: those of the job, in its order; change and droppings speak of them alone. The clip outlives this
    /// object.
    ClipSurvey(const Clip& clip, const std::vector<std::int32_t>& frames);

    /// From now on, whole headers of these frames are kept once they are read; of others, only what change and
    /// droppings tell: a clip may have ten thousand.
    void keep(const std::vector<std::int32_t>& frames);

    /// The whole header of a frame. Throws Image::ImageError; again the same one if the header could not be read
    /// before.
    std::shared_ptr<const Image::Frame> header(std::int32_t frame);

    /// Reads, on so many threads, the headers of those of the frames that were not read before. `use`, if there is one,
    /// is called with each frame's, by one thread at a time; it throws nothing. For it, a header that was read before
    /// and not kept is read again. A header that cannot be read is skipped: its frame fails later. `mustStop` ends it
    /// early.
    using Use = std::function<void(std::int32_t frame, const Image::Frame& header)>;
    void read(const std::vector<std::int32_t>& frames, unsigned int threads, const std::function<bool()>& mustStop,
              const Use& use);

    /// Of size or channels within the sequence, in a sentence that names the clip; empty: none is known.
    std::string change() const;
    /// What of the files is not read (mip levels, further pages and pictures), in such sentences.
    std::vector<std::string> droppings() const;

private:
    using Frames = std::set<std::int32_t>;
    /// Size and channels of a frame's parts; equal texts mean equal frames.
    struct Shape {
        std::string size;
        std::string channels;
        auto operator<=>(const Shape&) const = default;
    };

    static Shape shapeOf(const Image::Frame& header);
    bool isRead(std::int32_t frame) const;

    const Clip& m_clip;
    const Frames m_jobFrames;
    Frames m_toKeep;
    std::mutex m_use;
    mutable std::mutex m_access; ///< guards what follows
    Frames m_read;
    std::map<std::int32_t, std::shared_ptr<const Image::Frame>> m_kept;
    std::map<std::int32_t, std::exception_ptr> m_errors;
    std::map<Shape, Frames> m_shapes;
    std::map<std::string, Frames> m_dropped;
};

/// The frames missing between the keys, as a list: "3, 7-9"; after ten entries only how many follow.
std::string gapsBetween(const std::map<std::int32_t, std::string>& files);

} // namespace Tools
