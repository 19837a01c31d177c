#include "ExrClip.h"

#include <ImfChannelList.h>
#include <ImfFrameBuffer.h>
#include <ImfHeader.h>
#include <ImfInputFile.h>
#include <ImfOutputFile.h>

#include <map>
#include <stdexcept>

std::string ExrClip::channelName(int layer, int channel) {
    const std::string name(1, "RGBA"[channel]);
    return layer == 0 ? name : "layer" + std::to_string(layer) + "." + name;
}

Imf::Compression ExrClip::compression(const std::string& name) {
    static const std::map<std::string, Imf::Compression> compressions = {
        {"none", Imf::NO_COMPRESSION},   {"rle", Imf::RLE_COMPRESSION},   {"zips", Imf::ZIPS_COMPRESSION},
        {"zip", Imf::ZIP_COMPRESSION},   {"piz", Imf::PIZ_COMPRESSION},   {"pxr24", Imf::PXR24_COMPRESSION},
        {"b44", Imf::B44_COMPRESSION},   {"b44a", Imf::B44A_COMPRESSION}, {"dwaa", Imf::DWAA_COMPRESSION},
        {"dwab", Imf::DWAB_COMPRESSION},
    };
    const auto found = compressions.find(name);
    if (found == compressions.end()) throw std::invalid_argument("No compression is named " + name + ".");
    return found->second;
}

namespace {

template <typename Value, typename Name>
Imf::FrameBuffer frameBuffer(int width, int height, int layers, int channels, const Value* values, Imf::PixelType type,
                             const Name& name) {
    Imf::FrameBuffer buffer;
    const std::size_t pixel = sizeof(Value) * static_cast<std::size_t>(channels);
    const std::size_t row = pixel * static_cast<std::size_t>(width);
    for (int layer = 0; layer < layers; layer++)
        for (int channel = 0; channel < channels; channel++) {
            const std::size_t offset = row * static_cast<std::size_t>(height) * static_cast<std::size_t>(layer) +
                                       sizeof(Value) * static_cast<std::size_t>(channel);
            // The library takes one type of buffer for reading and writing.
            char* const base = reinterpret_cast<char*>(const_cast<Value*>(values)) + offset;
            buffer.insert(name(layer, channel), Imf::Slice(type, base, pixel, row));
        }
    return buffer;
}

} // namespace

void ExrClip::read(const std::string& path, Frame& frame, std::vector<float>& values) {
    Imf::InputFile file(path.c_str());
    const Imath::Box2i window = file.header().dataWindow();
    int channels = 0;
    for (auto channel = file.header().channels().begin(); channel != file.header().channels().end(); ++channel)
        channels++;
    frame.width = window.max.x - window.min.x + 1;
    frame.height = window.max.y - window.min.y + 1;
    frame.layers = channels / 4;
    values.resize(static_cast<std::size_t>(frame.width) * static_cast<std::size_t>(frame.height) * 4 *
                  static_cast<std::size_t>(frame.layers));
    file.setFrameBuffer(
        frameBuffer(frame.width, frame.height, frame.layers, 4, values.data(), Imf::FLOAT, channelName));
    file.readPixels(window.min.y, window.max.y);
}

void ExrClip::write(const std::string& path, const Frame& frame, Imf::Compression compression) {
    Imf::Header header(frame.width, frame.height, 1.0f, Imath::V2f(0, 0), 1.0f, Imf::INCREASING_Y, compression);
    for (int layer = 0; layer < frame.layers; layer++)
        for (int channel = 0; channel < 4; channel++)
            header.channels().insert(channelName(layer, channel), Imf::Channel(Imf::HALF));
    Imf::OutputFile file(path.c_str(), header);
    file.setFrameBuffer(
        frameBuffer(frame.width, frame.height, frame.layers, 4, frame.values.data(), Imf::HALF, channelName));
    file.writePixels(frame.height);
}

void ExrClip::writeFloat(const std::string& path, int width, int height, int channels,
                         const std::vector<float>& values) {
    Imf::Header header(width, height, 1.0f, Imath::V2f(0, 0), 1.0f, Imf::INCREASING_Y, Imf::NO_COMPRESSION);
    for (int channel = 0; channel < channels; channel++)
        header.channels().insert(channelName(0, channel), Imf::Channel(Imf::FLOAT));
    Imf::OutputFile file(path.c_str(), header);
    file.setFrameBuffer(frameBuffer(width, height, 1, channels, values.data(), Imf::FLOAT, channelName));
    file.writePixels(height);
}
