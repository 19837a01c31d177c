#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "Chain/ChainSettings.h"
#include "Clip/DecodingOptions.h"
#include "Clip/FrameRange.h"

namespace Tools {

/// Where a command takes its frames and their lens data from.
struct LensOptions : LensDataOptions {
    std::string input;             ///< a clip; with `size` a correction file
    std::optional<PixelSize> size; ///< the frames of a correction file, looked at without their clip
    std::optional<std::string> plate;
    std::optional<FrameRange> frames;
    DecodingOptions decoding; ///< of the clip and the plate
};

} // namespace Tools
