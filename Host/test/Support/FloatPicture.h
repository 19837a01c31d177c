#pragma once

#include "Image/Frame.h"

/// A part of single-precision A, B, G and R in one plane, with memory for its pixels.
inline HostImage::Part floatPicture(const HostImage::Window& data, const HostImage::Window& display) {
    HostImage::Part part;
    part.dataWindow = data;
    part.displayWindow = display;
    for (const char* const name : {"A", "B", "G", "R"}) {
        HostImage::Channel channel;
        channel.name = name;
        channel.type = HostImage::PixelType::Float;
        part.channels.push_back(channel);
    }
    part.layOutPlanes();
    part.allocatePixels();
    return part;
}
