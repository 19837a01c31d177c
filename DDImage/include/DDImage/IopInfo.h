#pragma once

#include "DDImage/ChannelSet.h"
#include "DDImage/Info2D.h"

namespace DD {
namespace Image {

/// The properties of an op's image. Valid once the op is validated.
class IopInfo : public Info2D {
public:
    ChannelMask channels() const { return m_channels; }
    void channels(ChannelMask channels) { m_channels = channels; }
    bool black_outside() const { return m_blackOutside; }
    void black_outside(bool black) { m_blackOutside = black; }

private:
    ChannelSet m_channels;
    bool m_blackOutside = true;
};

} // namespace Image
} // namespace DD
