#include "Chain/ShadingLayers.h"

#include <fmt/format.h>
#include <fnmatch.h>

#include <algorithm>
#include <array>
#include <string_view>

#include "Report/Failure.h"
#include "Text/lowerCase.h"

namespace Tools {
namespace {

constexpr std::string_view mainLayer = "rgba";

bool isUpper(char character) { return character >= 'A' && character <= 'Z'; }
bool isLower(char character) { return character >= 'a' && character <= 'z'; }
bool isDigit(char character) { return character >= '0' && character <= '9'; }

template <std::size_t count>
bool isOneOf(std::string_view text, const std::array<std::string_view, count>& list) {
    return std::find(list.begin(), list.end(), text) != list.end();
}

/// Whether a word begins at a place inside a run of letters and digits: objectID, VRayDepth; but not in IDs and UVs.
bool isBeginOfWord(std::string_view name, std::size_t place) {
    if (!isUpper(name[place])) return false;
    if (!isUpper(name[place - 1])) return true;
    const auto isLowerAt = [name](std::size_t at) { return at < name.size() && isLower(name[at]); };
    const bool isPlural = place + 1 < name.size() && name[place + 1] == 's' && !isLowerAt(place + 2);
    return isLowerAt(place + 1) && !isPlural;
}

/// The words of a layer's name in lower case, without numbers at their ends.
std::vector<std::string> words(std::string_view name) {
    std::vector<std::string> words;
    std::string word;
    const auto end = [&] {
        while (!word.empty() && isDigit(word.back())) word.pop_back();
        if (!word.empty()) words.push_back(Text::lowerCase(word));
        word.clear();
    };
    for (std::size_t i = 0; i < name.size(); ++i) {
        const bool isSeparator = name[i] == '.' || name[i] == '_' || name[i] == '-';
        if (isSeparator || (!word.empty() && isBeginOfWord(name, i))) end();
        if (!isSeparator) word += name[i];
    }
    end();
    return words;
}

bool isDataWord(const std::string& word) {
    static constexpr std::array<std::string_view, 23> known = {
        "depth",  "depths",  "normal",     "normals", "position", "positions", "motion", "motions",
        "vector", "vectors", "velocity",   "uv",      "uvs",      "st",        "id",     "ids",
        "mask",   "masks",   "velocities", "pref",    "pworld",   "nref",      "sts"};
    return isOneOf(word, known) || word.starts_with("crypto");
}

bool isAlpha(const Image::Channel& channel) {
    static constexpr std::array<std::string_view, 2> names = {"a", "alpha"};
    return isOneOf(Text::lowerCase(channel.baseName()), names);
}

bool isColour(const Image::Part& part, const Image::Channel& channel) {
    static constexpr std::array<std::string_view, 6> names = {"r", "g", "b", "red", "green", "blue"};
    if (isOneOf(Text::lowerCase(channel.baseName()), names)) return true;
    return channel.name == "Y" && !part.findChannel("R");
}

/// The layer of a part's channels that have none, if the part's name is it; else empty.
std::string layerOfPart(const Image::Frame& frame, const Image::Part& part) {
    return frame.parts.size() > 1 ? part.name : std::string();
}

/// Empty for channels such as "Z" in a file of one part.
std::string layerOf(const Image::Frame& frame, const Image::Part& part, const Image::Channel& channel) {
    if (!channel.layer().empty()) return std::string(channel.layer());
    if (const std::string layer = layerOfPart(frame, part); !layer.empty()) return layer;
    return isColour(part, channel) || isAlpha(channel) ? std::string(mainLayer) : std::string();
}

} // namespace

ShadingLayers ShadingLayers::parse(const std::string& patterns) {
    ShadingLayers layers;
    layers.m_text = patterns;
    for (std::size_t begin = 0, end = 0; end != std::string::npos; begin = end + 1) {
        end = patterns.find(',', begin);
        Pattern pattern{patterns.substr(begin, end == std::string::npos ? end : end - begin)};
        if (pattern.text.starts_with('!')) pattern = {pattern.text.substr(1), false};
        if (pattern.text.empty())
            refuse(
                fmt::format("--shading-layers \"{}\" has an empty pattern; write layer "
                            "names separated by commas, such as \"rgba,light_*\".",
                            patterns));
        layers.m_patterns.push_back(pattern);
    }
    return layers;
}

bool ShadingLayers::isDataLayer(const std::string& layer) {
    if (layer == "N" || layer == "P" || layer == "Z") return true;
    const std::vector<std::string> all = words(layer);
    return std::any_of(all.begin(), all.end(), isDataWord);
}

bool ShadingLayers::isDataPart(const Image::Frame& frame, std::size_t part) {
    return isDataLayer(layerOfPart(frame, frame.parts.at(part)));
}

std::vector<bool> ShadingLayers::shadedChannels(const Image::Frame& frame, std::size_t part) const {
    const Image::Part& picture = frame.parts.at(part);
    std::vector<bool> shaded;
    for (const Image::Channel& channel : picture.channels) {
        const std::string layer = layerOf(frame, picture, channel);
        bool isShaded = m_patterns.empty() && isColour(picture, channel) && !isDataLayer(layer);
        for (const Pattern& pattern : m_patterns) {
            const auto fits = [&](const std::string& name) {
                return fnmatch(pattern.text.c_str(), name.c_str(), 0) == 0;
            };
            if (fits(layer) || fits(channel.name)) isShaded = pattern.isShaded;
        }
        shaded.push_back(isShaded && !isAlpha(channel));
    }
    return shaded;
}

std::vector<std::string> ShadingLayers::unshaded(const Image::Frame& frame, std::size_t part) const {
    const Image::Part& picture = frame.parts.at(part);
    const std::vector<bool> shaded = shadedChannels(frame, part);
    const bool isAlphaOnly = std::all_of(picture.channels.begin(), picture.channels.end(), isAlpha);
    const auto isWholeLayerLeft = [&](const std::string& layer) {
        for (std::size_t i = 0; i < shaded.size(); ++i)
            if (shaded[i] && layerOf(frame, picture, picture.channels[i]) == layer) return false;
        return !layer.empty() && layer != mainLayer;
    };
    std::vector<std::string> names;
    for (std::size_t i = 0; i < shaded.size(); ++i) {
        const Image::Channel& channel = picture.channels[i];
        if (shaded[i] || (isAlpha(channel) && !isAlphaOnly)) continue;
        const std::string layer = layerOf(frame, picture, channel);
        const std::string name = isWholeLayerLeft(layer) ? layer : channel.name;
        if (std::find(names.begin(), names.end(), name) == names.end()) names.push_back(name);
    }
    return names;
}

} // namespace Tools
