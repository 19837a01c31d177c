#include "PackedPlane.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <string>

#include "DDImage/Channel.h"

using DD::Image::Box;
using DD::Image::Channel;
using DD::Image::ImagePlane;

namespace {

const char* const c_colorNames[] = {"red", "green", "blue", "alpha"};
constexpr int c_alphaLane = 3;
constexpr int c_laneCount = 4;

/// 0 to 3 for a channel that is a layer's red, green, blue or alpha; −1 for any other.
int colorLane(Channel channel) {
    const std::string name = DD::Image::getName(channel);
    const std::string channelName = name.substr(name.rfind('.') + 1);
    const auto* const place = std::find(std::begin(c_colorNames), std::end(c_colorNames), channelName);
    return place == std::end(c_colorNames) ? -1 : static_cast<int>(place - c_colorNames);
}

/// Fills the lane of each of the plane's components from `firstComponent` on, and returns how many found one.
int findLanes(const ImagePlane& plane, int firstComponent, int (&lanes)[c_laneCount]) {
    const int limit = std::min(plane.nComps() - firstComponent, c_laneCount);
    int colorLanes[c_laneCount] = {-1, -1, -1, -1};
    const DD::Image::ChannelSet channels = plane.channels();
    for (Channel channel = channels.first(); channel; channel = channels.next(channel)) {
        const int component = plane.chanNo(channel) - firstComponent;
        if (component >= 0 && component < limit) colorLanes[component] = colorLane(channel);
    }
    bool isTaken[c_laneCount] = {};
    int count = 0;
    for (; count < limit; ++count) {
        int lane = colorLanes[count];
        if (lane < 0) lane = static_cast<int>(std::find(isTaken, isTaken + c_alphaLane, false) - isTaken);
        const bool isFree = !isTaken[lane] && (lane != c_alphaLane || colorLanes[count] == c_alphaLane);
        if (!isFree) break;
        isTaken[lane] = true;
        lanes[count] = lane;
    }
    return count;
}

/// Calls visit(index in the plane's buffer, index in the packed buffer) for every value that both hold.
template <typename Visit>
void visitOverlap(const ImagePlane& plane, const Box& box, int firstComponent, int componentCount, const int* lanes,
                  Visit visit) {
    const Box bounds = plane.bounds();
    const int left = std::max(bounds.x(), box.x());
    const int right = std::min(bounds.r(), box.r());
    const int bottom = std::max(bounds.y(), box.y());
    const int top = std::min(bounds.t(), box.t());
    const std::ptrdiff_t colStride = plane.colStride();
    const std::ptrdiff_t rowStride = plane.rowStride();
    const std::ptrdiff_t chanStride = plane.chanStride();
    for (int y = bottom; y < top; ++y) {
        for (int component = 0; component < componentCount; ++component) {
            std::ptrdiff_t planeIndex = (y - bounds.y()) * rowStride + (left - bounds.x()) * colStride +
                                        (firstComponent + component) * chanStride;
            std::ptrdiff_t packedIndex =
                (static_cast<std::ptrdiff_t>(y - box.y()) * box.w() + (left - box.x())) * 4 + lanes[component];
            for (int x = left; x < right; ++x, planeIndex += colStride, packedIndex += 4)
                visit(planeIndex, packedIndex);
        }
    }
}

} // namespace

PackedPlane::PackedPlane(const ImagePlane& plane, const Box& box, int firstComponent)
    : m_box(box),
      m_firstComponent(firstComponent),
      m_componentCount(findLanes(plane, firstComponent, m_lanes)),
      m_pixels(new float[static_cast<std::size_t>(box.w()) * static_cast<std::size_t>(box.h()) * c_laneCount]()) {
    const float* const source = plane.readable();
    float* const target = m_pixels.get();
    visitOverlap(
        plane, m_box, m_firstComponent, m_componentCount, m_lanes,
        [=](std::ptrdiff_t planeIndex, std::ptrdiff_t packedIndex) { target[packedIndex] = source[planeIndex]; });
}

void PackedPlane::unpack(const float* pixels, ImagePlane& plane) const {
    float* const target = plane.writable();
    visitOverlap(
        plane, m_box, m_firstComponent, m_componentCount, m_lanes,
        [=](std::ptrdiff_t planeIndex, std::ptrdiff_t packedIndex) { target[planeIndex] = pixels[packedIndex]; });
}

bool PackedPlane::isPacked(const ImagePlane& plane, const Box& box) {
    const Box bounds = plane.bounds();
    const bool coversBox =
        bounds.x() == box.x() && bounds.y() == box.y() && bounds.r() == box.r() && bounds.t() == box.t();
    if (!coversBox || !plane.packed() || plane.nComps() != c_laneCount || plane.colStride() != c_laneCount ||
        plane.rowStride() != box.w() * c_laneCount || plane.chanStride() != 1) {
        return false;
    }
    int lanes[c_laneCount];
    return findLanes(plane, 0, lanes) == c_laneCount && lanes[0] == 0 && lanes[1] == 1 && lanes[2] == 2;
}
