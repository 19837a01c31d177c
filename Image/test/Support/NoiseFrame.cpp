#include "Support/NoiseFrame.h"

#include <cmath>
#include <cstring>

using namespace Image;

Channel namedChannel(const std::string& name, PixelType type) {
    Channel channel;
    channel.name = name;
    channel.type = type;
    return channel;
}

std::vector<Channel> rgba(PixelType type) {
    return {namedChannel("A", type), namedChannel("B", type), namedChannel("G", type), namedChannel("R", type)};
}

Part noisePart(const Window& window, const std::vector<Channel>& channels) {
    Part part;
    part.dataWindow = part.displayWindow = window;
    part.channels = channels;
    part.layOutPlanes();
    part.allocatePixels();
    std::uint32_t state = 1;
    for (Plane& plane : part.planes) {
        std::vector<float> row(plane.width * plane.components);
        for (std::size_t y = 0; y < plane.height; ++y) {
            for (std::size_t i = 0; i < row.size(); ++i) {
                state = state * 1664525u + 1013904223u;
                // A smooth picture with grain, as a plate has.
                const float grain = static_cast<float>(state >> 8) * 0x1p-24f;
                const float place = static_cast<float>(i / plane.components) + 0.7f * static_cast<float>(y);
                row[i] = 0.4f + 0.3f * std::sin(place * 0.01f) + 0.05f * grain;
                if (plane.type == PixelType::UInt32) row[i] = static_cast<float>(state >> 8);
            }
            plane.rowFromFloat(y, row.data());
        }
    }
    return part;
}

Frame noiseFrame(const Window& window, const std::vector<Channel>& channels) {
    Frame frame;
    frame.format = "exr";
    frame.parts.push_back(noisePart(window, channels));
    return frame;
}

std::string pixelBytes(const Part& part) {
    std::string bytes;
    for (const Plane& plane : part.planes)
        bytes.append(reinterpret_cast<const char*>(plane.pixels.data()), plane.pixels.size());
    return bytes;
}
