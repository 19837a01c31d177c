#pragma once

#include "DDImage/Box.h"
#include "DDImage/ChannelSet.h"

namespace DD {
namespace Image {

/// The shape of a plane: its box, its channels and whether they are interleaved ("packed").
class ImagePlaneDescriptor {
public:
    ImagePlaneDescriptor() = default;
    ImagePlaneDescriptor(const Box& bounds, bool packed, ChannelMask channels, int nComps);

    Box bounds() const { return m_bounds; }
    ChannelSet channels() const { return m_channels; }
    bool packed() const { return m_packed; }
    int nComps() const { return m_nComps; }

private:
    Box m_bounds;
    ChannelSet m_channels;
    bool m_packed = false;
    int m_nComps = 0;
};

} // namespace Image
} // namespace DD
