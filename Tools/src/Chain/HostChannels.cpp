#include "Chain/HostChannels.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <numeric>

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

} // namespace Tools
