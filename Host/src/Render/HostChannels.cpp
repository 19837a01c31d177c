#include "Render/HostChannels.h"

#include <algorithm>
#include <cstddef>
#include <numeric>

namespace Host {
namespace {

std::string longName(const std::string& baseName) {
    if (baseName == "R") return "red";
    if (baseName == "G") return "green";
    if (baseName == "B") return "blue";
    if (baseName == "A") return "alpha";
    return baseName;
}

std::string hostName(const HostImage::Part& part, const HostImage::Channel& channel) {
    const std::string layer(channel.layer());
    const std::string base(channel.baseName());
    if (!layer.empty()) return layer + "." + longName(base);
    if (longName(base) != base) return "rgba." + longName(base);
    if (base == "Y" && !part.findChannel("R")) return "rgba.red";
    if (base == "Z") return "depth.Z";
    return "other." + base;
}

} // namespace

std::vector<DD::Image::Channel> hostChannels(const HostImage::Part& part) {
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

} // namespace Host
