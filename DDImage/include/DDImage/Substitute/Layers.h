#pragma once

#include "DDImage/ChannelSet.h"

#include <vector>

namespace DD {
namespace Image {

/// Groups channels into planes: channels of one layer, at most four, ascending; planes in order of their first channel.
/// A layer of more than four channels takes several planes.
std::vector<ChannelSet> splitIntoLayers(ChannelMask channels);

/// All channels of `available` that belong to a layer of `channels`, and `channels` themselves. The layer "rgba" is
/// always complete: missing channels are black, because renderers take four.
ChannelSet expandToLayers(ChannelMask channels, ChannelMask available);

} // namespace Image
} // namespace DD
