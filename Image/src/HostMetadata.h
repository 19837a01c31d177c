#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <variant>
#include <vector>

#include "Frame.h"

namespace Image {

using MetadataValue = std::variant<std::string, std::int64_t, double, std::vector<int>, std::vector<double>>;
/// Key → value, in byte order of the keys.
using Metadata = std::map<std::string, MetadataValue>;

/// The metadata a compositing host shows for a frame it has read:
/// - `input/filename`, `input/filereader` ("exr"), `input/width`, `input/height` (of the display window),
///   `input/bitsperchannel` ("16-bit half float"), `input/filesize`, `input/frame`, `input/frame_rate` and
///   `input/timecode` ("HH:MM:SS:FF") if the file has one;
/// - `exr/NAME` for every attribute of an EXR's first part that is text, a number, or a list of numbers;
/// - `dpx/NAME`, `tiff/NAME`, … for other stills; `quicktime/a/b/c` for a movie's key "a.b.c".
/// `frameNumber` is the frame of the clip, as in the file's name or the movie's place on the timeline.
Metadata hostMetadata(const Frame& header, const std::string& path, std::int64_t frameNumber);

/// "HH:MM:SS:FF" of a packed SMPTE word (binary-coded digits; the flag bits are ignored); "" if a digit is above 9. The
/// word has no room for frames of 40 and more.
std::string timecodeText(std::uint32_t timeAndFlags);

/// One value as text: numbers in their shortest exact form, lists with spaces between.
std::string metadataText(const MetadataValue& value);

} // namespace Image
