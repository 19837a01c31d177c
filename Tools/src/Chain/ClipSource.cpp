#include "Chain/ClipSource.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <numeric>
#include <type_traits>

#include "Chain/InputSpace.h"
#include "Chain/PlaneTransfer.h"
#include "DDImage/IopInfo.h"

namespace Tools {
namespace {

std::string longName(const Image::Channel& channel) {
    constexpr std::array<const char*, 4> names = {"red", "green", "blue", "alpha"};
    const std::size_t place = channel.colourPlace();
    return place < names.size() ? names[place] : std::string(channel.baseName());
}

std::string hostName(const Image::Part& part, const Image::Channel& channel) {
    const std::string layer(channel.layer());
    const std::string base(channel.baseName());
    if (!layer.empty()) return layer + "." + longName(channel);
    if (longName(channel) != base) return "rgba." + longName(channel);
    if (base == "Y" && !part.findChannel("R")) return "rgba.red";
    if (base == "Z") return "depth.Z";
    return "other." + base;
}

} // namespace

std::vector<DD::Image::Channel> hostChannels(const Image::Part& part) {
    std::vector<std::size_t> order(part.channels.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::stable_sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
        return part.channels[a].colourPlace() < part.channels[b].colourPlace();
    });
    std::vector<DD::Image::Channel> channels(part.channels.size(), DD::Image::Chan_Black);
    for (const std::size_t i : order) {
        std::string name = hostName(part, part.channels[i]);
        // A file may hold both "R" and "rgba.R"; none of them may be lost.
        while (std::find(channels.begin(), channels.end(), DD::Image::channel(name.c_str())) != channels.end())
            name += "_";
        channels[i] = DD::Image::channel(name.c_str());
    }
    return channels;
}

ClipSource::ClipSource(const Image::Frame& frame, std::size_t part, const Image::Metadata& metadata, ClipRange range,
                       Settings settings)
    : m_part(frame.parts.at(part)),
      m_metadata(metadata),
      m_range(range),
      m_settings(settings),
      m_channels(hostChannels(m_part)) {}

void ClipSource::fillInfo(double, DD::Image::IopInfo& info) {
    const DD::Image::Format format(static_cast<int>(m_part.displayWindow.width()),
                                   static_cast<int>(m_part.displayWindow.height()),
                                   static_cast<double>(m_part.pixelAspectRatio));
    info.format(format);
    info.full_size_format(format);
    info.setBox(m_settings.box ? *m_settings.box : hostBox(m_part.dataWindow, m_part.displayWindow));
    DD::Image::ChannelSet channels;
    if (m_settings.isMap) channels += DD::Image::Mask_RGBA;
    for (const DD::Image::Channel channel : m_channels) channels += channel;
    info.channels(channels);
    info.first_frame(m_range.first);
    info.last_frame(m_range.last);
}

void ClipSource::fillMetaData(double, DD::Image::MetaData::Bundle& metaData) {
    for (const auto& [key, value] : m_metadata) {
        std::visit(
            [&, name = key](const auto& content) {
                if constexpr (std::is_same_v<std::decay_t<decltype(content)>, std::vector<int>>)
                    metaData.setData(name, std::vector<std::int64_t>(content.begin(), content.end()));
                else
                    metaData.setData(name, content);
            },
            value);
    }
}

void ClipSource::fillPlane(double, DD::Image::ImagePlane& plane) {
    if (m_settings.isMap) return plane.clear();
    Tools::fillPlane(plane, m_part, m_channels, m_settings.threads);
    if (m_settings.space)
        m_settings.space->toSceneLinear(plane, hostBox(m_part.dataWindow, m_part.displayWindow), m_settings.threads,
                                        m_settings.isDataPart);
}

} // namespace Tools
