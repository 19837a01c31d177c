#pragma once

#include <cstdint>

#include "Chain/FramePlan.h"
#include "FrameWriter.h"
#include "Render/RenderOptions.h"

namespace Tools {

/// What the pictures that a job writes look like: their windows, their channels, and the type in which their format
/// stores pixels. A view of the options, which outlive it.
class OutputLayout {
public:
    explicit OutputLayout(const RenderOptions& options) : m_options(options) {}

    /// How frames are encoded, on one thread.
    Image::WriteOptions writeOptions() const;

    /// What of the nodes' box goes into the file, when no other frame has a say.
    DD::Image::Box fileBox(const FramePlan& plan, const PictureShape& shape) const;

    /// The data window, in the file's coordinates, of a picture whose file holds this box.
    Image::Window dataWindow(const DD::Image::Box& box, const Image::Window& displayWindow) const;

    /// Makes `output` what the input part becomes with such a box: header, channels and planes. Pixel memory stays.
    void layOut(const Image::Part& input, const DD::Image::Box& box, Image::Part& output) const;

    /// Refuses, in the pattern's name, pixels that the output's format cannot hold: they would otherwise fail every
    /// frame once it is corrected. Throws Failure (WrongUse).
    void check(const Image::Frame& input) const;

    /// Bytes of a frame's pixels in memory.
    struct FrameSize {
        std::uint64_t before = 0;   ///< as decoded
        std::uint64_t after = 0;    ///< as the output's format stores them, in a data window of the same size
        std::uint64_t asFloats = 0; ///< of one layer, as the nodes render it; the largest part's
    };
    FrameSize sizeOf(const Image::Frame& input) const;

private:
    const RenderOptions& m_options;
};

} // namespace Tools
