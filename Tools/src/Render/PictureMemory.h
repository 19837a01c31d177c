#pragma once

#include <vector>

#include "Chain/InputSpace.h"
#include "DDImage/Channel.h"
#include "DDImage/ImagePlane.h"
#include "Frame.h"

namespace Tools {

/// Moves pixel memory from the planes of `from` to those planes of `to`, in the same places, that have none. So a
/// picture's memory returns from encoding to decoding.
void moveMemory(Image::Frame& from, Image::Frame& to);

/// Memory for the picture that a part becomes, layer by layer as these are rendered. It reuses the part's own once
/// nothing more is rendered from it, so that a frame's layers do not all exist twice.
class PictureMemory {
public:
    /// `output` has the part's channels, or those of a map, and is laid out. `isBlack`: whether planes begin black,
    /// since not every pixel will be rendered; black is what `space` has for it (`isDataPart`: as InputSpace has it).
    /// The parts and the space must outlive this.
    PictureMemory(Image::Part& input, Image::Part& output, bool isBlack, const InputSpace& space, bool isDataPart);

    /// Gives memory to those of the output's planes that the host's plane is to be stored to (storePlane) and that have
    /// none yet, at the cost of the input's pixels in the same channels. Throws std::bad_alloc.
    void provideFor(const DD::Image::ImagePlane& plane, const std::vector<DD::Image::Channel>& channels);

private:
    bool hasSameChannels(std::size_t index) const;
    void blacken(std::size_t index, const std::vector<DD::Image::Channel>& channels);

    Image::Part& m_input;
    Image::Part& m_output;
    bool m_isBlack;
    const InputSpace& m_space;
    bool m_isDataPart;
    std::vector<bool> m_hasMemory; ///< of the output's planes
};

} // namespace Tools
