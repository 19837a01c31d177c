#pragma once

#include <cstdint>
#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Chain/ChainSettings.h"
#include "Chain/CorrectionChain.h"
#include "Clip/Clip.h"
#include "Clip/DecodingOptions.h"
#include "Clip/FrameRange.h"
#include "HostMetadata.h"
#include "Lens/FrameGeometry.h"

namespace Tools {

/// Where a command takes its frames and their lens data from.
struct LensOptions : LensDataOptions {
    std::string input;             ///< a clip; with `size` a correction file
    std::optional<PixelSize> size; ///< the frames of a correction file, looked at without their clip
    std::optional<std::string> plate;
    std::optional<FrameRange> frames;
    DecodingOptions decoding; ///< of the clip and the plate
};

/// Asks the distortion node how it renders the frames of a clip, or those of a correction file without their clip.
///
/// The node itself does it, behind a reader that shows the clip's headers; no pixels are read. Needs an OpenCL device,
/// since the node's core makes its renderers before it sizes a frame. One thread at a time.
class LensGeometry {
public:
    /// Opens the clip, or reads the correction file. Throws Failure (WrongUse), Image::ImageError.
    explicit LensGeometry(LensOptions options);
    ~LensGeometry();

    /// The requested frames, or all. A clip may lack some of them: `geometry` says so then.
    const std::vector<std::int32_t>& frames() const { return m_frames; }

    /// The frame's file; empty for a frame of a correction file.
    std::string file(std::int32_t frame) const;

    /// How the node undistorts or distorts the frame. Throws Failure (Correction) with the node's own
    /// texts, Image::ImageError.
    FrameGeometry geometry(std::int32_t frame, Direction direction);

    /// How the node distorts what it has undistorted, of that box. Likewise.
    FrameGeometry redistortion(std::int32_t frame, const FrameGeometry& undistortion);

    /// Renders a picture (one part of 32-bit float R, G, B, A) in place of the frame's own through the undistorting
    /// node, and the result through the distorting one. Likewise.
    Image::Frame renderRoundTrip(std::int32_t frame, const Image::Frame& picture);

    /// The data window of a frame as it comes in, in its file's coordinates. Throws Image::ImageError.
    Image::Window inputWindow(std::int32_t frame);

    /// One message about a frame: number, file, and why, with the values involved where the node tells them.
    std::string message(std::int32_t frame, const std::exception& exception) const;

    /// What to do when a frame fails for want of lens data: a sentence, or empty.
    std::string advice(const std::exception& exception) const;

private:
    struct Node;
    struct Header;

    const Header& header(std::int32_t frame);
    Header plateHeader(std::int32_t frame) const;
    Node& node(Direction direction, bool hasSeparatePlate);
    FrameGeometry validated(std::int32_t frame, Node& node, const ClipFrame& image, const ClipFrame& plate,
                            Direction direction) const;

    const LensOptions m_options;
    std::optional<Clip> m_clip; ///< none: a correction file alone
    std::optional<Clip> m_plate;
    std::string m_shownPath; ///< what the reader shows for a correction file alone
    std::vector<std::int32_t> m_frames;
    std::unique_ptr<Header> m_header; ///< of the frame that was requested last
    std::unique_ptr<Node> m_nodes[3];
};

} // namespace Tools
