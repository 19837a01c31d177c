#pragma once

#include <string>
#include <vector>

#include "Image/Frame.h"

/// A part of single-precision channels, with memory for its pixels; A, B, G and R are one plane.
inline HostImage::Part floatPicture(const HostImage::Window& data, const HostImage::Window& display,
                                    const std::vector<std::string>& names = {"A", "B", "G", "R"}) {
    HostImage::Part part;
    part.dataWindow = data;
    part.displayWindow = display;
    for (const std::string& name : names) {
        HostImage::Channel channel;
        channel.name = name;
        channel.type = HostImage::PixelType::Float;
        part.channels.push_back(channel);
    }
    part.layOutPlanes();
    part.allocatePixels();
    return part;
}
