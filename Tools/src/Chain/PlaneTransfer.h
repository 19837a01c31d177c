#pragma once

#include <vector>

#include "DDImage/Box.h"
#include "DDImage/Channel.h"
#include "DDImage/ImagePlane.h"
#include "Frame.h"

namespace Tools {

/// A window of a picture file (corners inclusive, y downwards) as a box of the host: the display window's bottom left
/// corner is its origin, right and top are exclusive, y upwards. Throws std::runtime_error for windows that are
/// further than 2^24 px from the display window, where single precision no longer tells pixels apart.
DD::Image::Box hostBox(const Image::Window& window, const Image::Window& displayWindow);

/// The reverse.
Image::Window fileWindow(const DD::Image::Box& box, const Image::Window& displayWindow);

/// Copies the part's pixels into the plane where the part's data window and the plane's box overlap, for the channels
/// that both have; everything else in the plane becomes black. `channels` belongs to the part's channels
/// (hostChannels). The plane must be writable. `threads`: how many threads, the caller's included, convert.
void fillPlane(DD::Image::ImagePlane& plane, const Image::Part& part, const std::vector<DD::Image::Channel>& channels,
               unsigned int threads);

/// Of one of a part's planes: whether its channels are in a plane of the host.
enum class PlaneShare { None, Some, Whole };

/// For each of the part's planes. `channels` as for fillPlane.
std::vector<PlaneShare> planeShares(const DD::Image::ImagePlane& plane, const Image::Part& part,
                                    const std::vector<DD::Image::Channel>& channels);

/// Copies the plane's pixels into the part, likewise; channels that the plane does not have are unchanged. The part's
/// planes that receive pixels must have memory.
void storePlane(const DD::Image::ImagePlane& plane, Image::Part& part, const std::vector<DD::Image::Channel>& channels,
                unsigned int threads);

/// Whether the plane has a value within the part's data window that an integer of up to 16 bits, which stands for 0 to
/// 1, cannot hold: one that is beyond by more than the rounding to 16 bits, or not a number.
bool exceedsIntegers(const DD::Image::ImagePlane& plane, const Image::Part& part, unsigned int threads);

} // namespace Tools
