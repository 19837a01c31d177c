#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "Frame.h"
#include "ImageError.h"

namespace Image {

/// What a file may claim to be before anything is allocated for it; 0 means no limit.
struct Limits {
    std::int64_t maxSide = 65536;
    std::int64_t maxPixels = std::int64_t{1} << 29;
    std::int64_t maxChannels = 1024;
    /// All samples of all parts together.
    std::int64_t maxBytes = std::int64_t{32} << 30;
};

/// An open picture file or movie. One thread at a time; different readers are independent.
class FrameReader {
public:
    FrameReader() = default;
    FrameReader(const FrameReader&) = delete;
    FrameReader& operator=(const FrameReader&) = delete;
    virtual ~FrameReader() = default;

    /// Pictures that follow each other in the file: 1 except for movies. Frames are counted from 0.
    virtual std::int64_t frameCount() const { return 1; }
    /// Everything but the pixels: parts with windows, channels, laid-out planes (without memory) and attributes. Cheap.
    /// Throws ImageError.
    virtual Frame readHeader(std::int64_t index = 0) = 0;
    /// The whole frame. Memory that `frame` holds from an earlier frame is reused. `threads` (at least 1) is how many
    /// threads, the caller's included, decode. Throws ImageError; the frame's content is then undefined.
    virtual void readPixels(Frame& frame, unsigned threads = 1, std::int64_t index = 0) = 0;
};

/// Opens the file and reads its header. The format follows from the content for EXR, otherwise from the file's
/// extension. Throws ImageError: missing or unreadable file, not an image, beyond the limits, or of a kind that is not
/// supported.
std::unique_ptr<FrameReader> openReader(const std::string& path, const Limits& limits = {});

/// Loads the module that decodes files of the path's extension, if it takes one, and opens no file. A missing module is
/// reported when a file is opened.
void loadReaderModule(const std::string& path);

/// Whether the path's extension is that of a movie (frames inside one file), e.g. "mov".
bool isMovie(const std::string& path);

} // namespace Image
