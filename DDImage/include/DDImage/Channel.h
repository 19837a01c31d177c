#pragma once

namespace DD {
namespace Image {

/// One channel of an image, named "layer.channel". The fixed ones come first; every other name gets the next number
/// when `channel` first sees it, and keeps it until the process ends.
enum Channel : unsigned {
    Chan_Black = 0, ///< no channel: always zero
    Chan_Red = 1,   ///< "rgba.red"
    Chan_Green = 2, ///< "rgba.green"
    Chan_Blue = 3,  ///< "rgba.blue"
    Chan_Alpha = 4, ///< "rgba.alpha"
    Chan_Z = 5,     ///< "depth.Z"
};

/// The channel called "layer.channel"; the layer is the part before the last dot. Any thread.
Channel channel(const char* name);

/// The full name of a channel, "layer.channel"; "black" for Chan_Black. Valid until the process ends. Any thread.
const char* getName(Channel);

/// The layer of a channel, "rgba" for Chan_Red; "" if the name has no dot. Valid until the process ends. Any thread.
const char* getLayerName(Channel);

} // namespace Image
} // namespace DD
