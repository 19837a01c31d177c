#pragma once

#include <string>
#include <vector>

#include "DDImage/Channel.h"
#include "Frame.h"

namespace Tools {

/// The host's channel for each channel of a part, in the part's order; no two are the same. The host numbers channels
/// as it learns of them, and lays pixels out by these numbers: it learns of a layer's R, G, B and A in this order.
///
/// | In the file              | In the host                              |
/// |--------------------------|------------------------------------------|
/// | R, G, B, A               | rgba.red, rgba.green, …                  |
/// | Y, where there is no R   | rgba.red: a grey picture is colour       |
/// | Z                        | depth.Z                                  |
/// | L.R, L.G, L.B, L.A       | L.red, L.green, …; small letters as well |
/// | L.X                      | L.X                                      |
/// | X                        | other.X                                  |
std::vector<DD::Image::Channel> hostChannels(const Image::Part& part);

} // namespace Tools
