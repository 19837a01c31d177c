#include "DDImage/Substitute/Layers.h"

#include <string>
#include <unordered_map>
#include <unordered_set>

namespace DD {
namespace Image {

namespace {

constexpr std::size_t mostChannelsOfAPlane = 4;

} // namespace

std::vector<ChannelSet> splitIntoLayers(ChannelMask channels) {
    std::vector<ChannelSet> planes;
    std::unordered_map<std::string, std::size_t> planeOfLayer;
    for (Channel z = channels.first(); z != Chan_Black; z = channels.next(z)) {
        const auto [place, isNew] = planeOfLayer.try_emplace(getLayerName(z), planes.size());
        if (!isNew && planes[place->second].size() < mostChannelsOfAPlane) {
            planes[place->second] += z;
            continue;
        }
        place->second = planes.size();
        planes.emplace_back(z);
    }
    return planes;
}

ChannelSet expandToLayers(ChannelMask channels, ChannelMask available) {
    std::unordered_set<std::string> layers;
    for (Channel z = channels.first(); z != Chan_Black; z = channels.next(z)) layers.insert(getLayerName(z));
    ChannelSet all = channels;
    for (Channel z = available.first(); z != Chan_Black; z = available.next(z))
        if (layers.count(getLayerName(z)) > 0) all += z;
    if (layers.count("rgba") > 0) all += Mask_RGBA;
    return all;
}

} // namespace Image
} // namespace DD
