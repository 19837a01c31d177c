#pragma once

#include <cstdint>
#include <string>

#include "Frame.h"

namespace Image {

/// The header of frame `index` of a movie, counted from 0, made from that of its first frame: they differ in their
/// timecodes only.
Frame movieHeader(const Frame& first, std::int64_t index);

/// Puts the timecode of a movie's first frame, a text such as "10:00:00;00", into its header, whose frame rate must be
/// there: packed where the word has room for it, as text where not (40 frames and more). A text that is no timecode
/// leaves the header without one.
void setStartTimecode(Part& part, const std::string& text);

} // namespace Image
