#pragma once

#include <string>
#include <vector>

#include "Frame.h"

/// A part of single-precision channels, with memory for its pixels; A, B, G and R are one plane.
inline Image::Part floatPicture(const Image::Window& data, const Image::Window& display,
                                const std::vector<std::string>& names = {"A", "B", "G", "R"}) {
    Image::Part part;
    part.dataWindow = data;
    part.displayWindow = display;
    for (const std::string& name : names) {
        Image::Channel channel;
        channel.name = name;
        channel.type = Image::PixelType::Float;
        part.channels.push_back(channel);
    }
    part.layOutPlanes();
    part.allocatePixels();
    return part;
}
