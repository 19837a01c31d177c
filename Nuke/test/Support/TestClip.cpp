#include "Support/TestClip.h"

#include <algorithm>

using namespace DD::Image;

TestClip::TestClip(int width, int height) : format(width, height), box(0, 0, width, height) {}

void TestClip::fillInfo(double, IopInfo& info) {
    info.format(format);
    info.full_size_format(format);
    info.set(box);
    info.channels(channels);
    info.first_frame(firstFrame);
    info.last_frame(lastFrame);
}

void TestClip::fillMetaData(double, MetaData::Bundle& target) { target = metaData; }

void TestClip::fillPlane(double, ImagePlane& plane) {
    ++fetchCount;
    const Box bounds = plane.bounds();
    const ChannelSet wanted = plane.channels();
    for (Channel channel = wanted.first(); channel; channel = wanted.next(channel)) {
        if (!channels.contains(channel)) continue;
        for (int y = std::max(bounds.y(), box.y()); y < std::min(bounds.t(), box.t()); ++y) {
            for (int x = std::max(bounds.x(), box.x()); x < std::min(bounds.r(), box.r()); ++x) {
                plane.writableAt(x, y, plane.chanNo(channel)) = pixel(x, y, channel);
            }
        }
    }
}
