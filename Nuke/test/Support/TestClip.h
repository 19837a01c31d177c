#pragma once

#include <atomic>
#include <functional>

#include "DDImage/Substitute/ReadSource.h"

/// A clip in memory, the same in every frame. Set it up before the reader is validated.
class TestClip : public DD::Image::ReadSource {
public:
    TestClip(int width, int height);

    void fillInfo(double frame, DD::Image::IopInfo& info) override;
    void fillMetaData(double frame, DD::Image::MetaData::Bundle& metaData) override;
    void fillPlane(double frame, DD::Image::ImagePlane& plane) override;

    DD::Image::Format format;
    DD::Image::Box box;
    DD::Image::ChannelSet channels = DD::Image::Mask_RGBA;
    int firstFrame = 1;
    int lastFrame = 100;
    DD::Image::MetaData::Bundle metaData;
    /// Column and row from the bottom left of the format.
    std::function<float(int x, int y, DD::Image::Channel)> pixel = [](int, int, DD::Image::Channel) { return 0.5f; };
    std::atomic<int> fetchCount{0};
};
