#pragma once

#include <optional>
#include <string>

#include "Frame.h"
#include "ImageError.h"

namespace Image {

class MemoryFile;

/// What OpenEXR's ZIP and ZIPS are compressed for. Every reader of them reads both.
enum class ZipGoal {
    Fast, ///< the encoder's time: files are up to 3 % larger than the stock codec's
    Small ///< the files' size, at several times the encoder's time
};

/// Overrides the way in which a frame says that it is stored.
struct WriteOptions {
    /// Of every part, as Part::compression; the parts' own if absent.
    std::optional<std::string> compression = {};
    /// Of every channel that is not UInt32; the channels' own if absent.
    std::optional<PixelType> pixelType = {};
    ZipGoal zip = ZipGoal::Fast;
    /// Threads that encode, the caller's included.
    unsigned threads = 1;
    /// Whether a missing file is created; otherwise it is an error.
    bool makesFile = true;
};

/// Writes the frame with all its parts and attributes; the format follows from the path's extension. The same frame and
/// options give the same bytes. The file is written in place (callers should use a temporary name and rename it) and
/// removed if writing fails. Throws ImageError, also for what checkFrame refuses.
void writeFrame(const std::string& path, const Frame& frame, const WriteOptions& options = {});

/// How the format of that path stores samples of that type with these options: in the nearest type that it has. Throws
/// ImageError for what checkOutputName refuses.
PixelType storedType(const std::string& path, PixelType type, const WriteOptions& options);

/// Throws ImageError if a plane has fewer pixels than its data window.
void checkPixels(const std::string& path, const Frame& frame);

/// The file that writeFrame makes of a still other than OpenEXR, into empty memory. The path gives the format and names
/// the frame in errors. The frame has passed both checks. Throws ImageError.
void encodeStill(const std::string& path, const Frame& frame, const WriteOptions& options, MemoryFile& file);

/// Writes these bytes to a file at that path, as writeFrame does. Throws ImageError.
void storeFile(const std::string& path, MemoryFile& bytes, const WriteOptions& options);

/// Throws ImageError if writeFrame refuses the path for its extension, whatever the frame; touches no file.
void checkOutputName(const std::string& path);

/// Throws ImageError if the format of that path has no room for the frame, whose pixels may be missing: for several
/// parts, channels beside the colours, integers of 32 bits, … Touches no file.
void checkFrame(const std::string& path, const Frame& frame, const WriteOptions& options = {});

} // namespace Image
