#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Clip/DecodingOptions.h"
#include "Clip/FrameFiles.h"
#include "HostMetadata.h"
#include "MetadataSidecar.h"

namespace Tools {

/// First and last frame of a whole clip: the correction counts frames from the first one.
struct ClipRange {
    std::int32_t first = 0;
    std::int32_t last = 0;
};

/// A clip on disk, ready to be read frame by frame: a sequence of pictures, one picture, or a movie, with its metadata
/// sidecar if there is one. A movie's frames are counted from 1.
///
/// Immutable after construction; any thread may read frames, each with a reader of its own.
class Clip {
public:
    /// Throws Failure (WrongUse) when nothing is there, Image::ImageError for a movie or a sidecar that cannot be
    /// read.
    explicit Clip(const std::string& path, DecodingOptions decoding = {});

    const FrameFiles& files() const { return m_files; }
    /// Every frame and its file.
    const std::map<std::int32_t, std::string>& frames() const { return m_frames; }
    /// The frames' numbers, ascending.
    std::vector<std::int32_t> frameNumbers() const;
    /// First and last frame as the nodes see them. They accept no negative frame number, and only a frame's position in
    /// the clip counts: a clip that begins below 0 is shown as one that begins at 0.
    ClipRange range() const;
    bool isMovie() const { return m_isMovie; }
    /// The clip's path for the finder of correction files.
    const std::string& searchPath() const { return m_searchPath; }
    /// The path under which a reader shows the frame to the nodes: shownClipPath, unless the sidecar's "input/filename"
    /// names the camera's own file, of which the clip is a transcoded copy; its format then decides how the metadata
    /// are read. A name without folder lies in the clip's.
    std::string shownPath(std::int32_t frame) const;

    /// A frame's header; a movie's come from the one that was read at construction. Throws Image::ImageError.
    Image::Frame readHeader(std::int32_t frame) const;
    /// The whole frame; memory of `into` is reused. Throws Image::ImageError.
    void read(std::int32_t frame, Image::Frame& into, unsigned int threads) const;
    /// What the host's reader shows for a frame whose header or pixels were read.
    Image::Metadata metadata(std::int32_t frame, const Image::Frame& header) const;
    /// The frame's file as found; nothing when the clip has no such frame. A single picture without a number serves
    /// every frame, as a still does on a timeline.
    std::optional<std::string> fileOf(std::int32_t frame) const;
    /// The frame's file with its folder's full path. Throws Image::ImageError when the clip has no such frame.
    std::string path(std::int32_t frame) const;

private:
    std::int64_t shownNumber(std::int32_t frame) const;
    std::int64_t indexInFile(std::int32_t frame) const;

    DecodingOptions m_decoding;
    FrameFiles m_files;
    bool m_isMovie;
    Image::Frame m_firstHeader; ///< of a movie
    std::map<std::int32_t, std::string> m_frames;
    std::string m_searchPath;
    std::string m_shownPath;
    std::optional<Image::MetadataSidecar> m_sidecar;
};

} // namespace Tools
