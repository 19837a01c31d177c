#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "HostMetadata.h"

namespace Image {

/// Camera metadata in a JSON file beside a clip, for clips that were transcoded from a format we cannot decode:
/// {"maker key": value, …}, and optionally "frames": {"1001": {"maker key": value, …}, …} with what differs per frame.
/// Values are text, numbers, true/false (1/0), or lists of numbers.
class MetadataSidecar {
public:
    /// Reads `path`. Throws ImageError with the place and the key of what is wrong.
    explicit MetadataSidecar(const std::string& path);

    /// The clip's values, overridden by the frame's own.
    Metadata values(std::int64_t frameNumber) const;

    /// Where the sidecar of a clip lies: "A001.metadata.json" for "A001.mov" and "A001.%04d.exr"; the path without
    /// extension, frame pattern or number, plus ".metadata.json".
    static std::string pathFor(const std::string& clip);

private:
    Metadata m_clip;
    std::map<std::int64_t, Metadata> m_frames;
};

} // namespace Image
