#pragma once

#include "DDImage/ChannelSet.h"

/// Tells what a layer holds by the names of its channels.
class LayerContent {
public:
    /// Whether the layer holds colour: its channels are red, green and blue, with or without alpha (or some of them, at
    /// least one colour), and its name is not that of a data layer (cryptomatte, identifiers, depth, normals,
    /// positions, motion), whose values stand in these channels too in many files.
    static bool isColor(const DD::Image::ChannelSet& channels);

    /// 0 to 3 for a channel that is a layer's red, green, blue or alpha; −1 for any other.
    static int colorLane(DD::Image::Channel channel);
};
