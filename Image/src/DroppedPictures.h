#pragma once

#include <string>
#include <vector>

#include "Frame.h"

namespace Image {

/// Text attribute in which a reader notes that a still other than OpenEXR holds more pictures than the one it reads:
/// "mip levels", "further pages", "a second picture" or "further pictures". It is not part of the file.
inline constexpr const char* droppedPicturesAttribute = "orvex:droppedPictures";

/// What a frame's file holds besides the pictures that are read, in these words; OpenEXR files may have "mip levels".
std::vector<std::string> droppedPictures(const Frame& header);

} // namespace Image
