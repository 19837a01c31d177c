#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "Chain/ChainSettings.h"
#include "Clip/DecodingOptions.h"
#include "Clip/FilePattern.h"
#include "Clip/FrameRange.h"
#include "Files.h"
#include "FrameWriter.h"

namespace Tools {

/// What a render job is to do; checked as far as that is possible without looking at the clip.
struct RenderOptions : ChainSettings {
    enum class Window {
        Box,    ///< data window = what the picture filled and fills now, display window = the format
        Format, ///< both are the format; what lies outside is cut off
    };
    enum class BoxSize {
        Frame,   ///< every frame has the data window that it needs
        Constant ///< all frames have one, which holds the picture of every frame of the clip
    };
    enum class PixelType { Half, Float };

    std::string clip; ///< as written
    FilePattern output;

    std::optional<std::string> plate; ///< the lens data come from this clip; `clip` is CG then

    std::optional<FrameRange> frames;       ///< without it, what exists on disk
    std::optional<PixelType> pixelType;     ///< without it, the clip's
    std::optional<std::string> compression; ///< OpenEXR's names in lower case; without it, the clip's
    Image::ZipGoal zip = Image::ZipGoal::Fast;
    Window window = Window::Box;
    BoxSize boxSize = BoxSize::Frame;

    bool skipExisting = false; ///< leave frames that are finished and made from the same inputs
    bool overwrite = false;    ///< replace existing files; with neither of the two, existing files end the job
    bool stopOnError = false;  ///< end at the first failed frame; otherwise continue with the others
    bool strict = false;       ///< gaps, and changes of size or channels, in a sequence end the job before it begins
    bool force = false;        ///< correct although the clip carries the mark of a correction

    DecodingOptions decoding;

    std::uint64_t memory = 0; ///< bytes for frames on the way; 0: half of the machine's
    unsigned int threads = 0; ///< 0: one per core

    /// Whether the output's format tells where its pixels lie; others hold the whole picture, always of one size.
    bool isOutputWithDataWindow() const { return Image::fileExtension(output.string()) == "exr"; }

    /// Of a frame, how many parts are corrected, from the first on: all, but for a map.
    std::size_t partCount(const Image::Frame& frame) const { return renderMap ? 1 : frame.parts.size(); }
};

} // namespace Tools
