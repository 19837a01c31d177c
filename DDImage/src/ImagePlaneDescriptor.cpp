#include "DDImage/ImagePlaneDescriptor.h"

namespace DD {
namespace Image {

ImagePlaneDescriptor::ImagePlaneDescriptor(const Box& bounds, bool packed, ChannelMask channels, int nComps)
    : m_bounds(bounds), m_channels(channels), m_packed(packed), m_nComps(nComps) {}

} // namespace Image
} // namespace DD
