#include "Chain/ClipSource.h"

#include <type_traits>

#include "Chain/HostChannels.h"
#include "Chain/InputSpace.h"
#include "Chain/PlaneTransfer.h"
#include "DDImage/IopInfo.h"

namespace Tools {

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
