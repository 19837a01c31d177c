#include "LayerContent.h"

#include <cstring>
#include <string>

namespace {

const char* const c_colorNames[] = {"red", "green", "blue", "alpha"};
constexpr int c_alphaLane = 3;

// Last parts of layer names, in lower case.
const char* const c_dataLayerNames[] = {"id",      "ids",      "depth",  "z",      "n",        "normal", "normals",
                                        "p",       "position", "pworld", "pref",   "nref",     "uv",     "st",
                                        "forward", "backward", "motion", "vector", "velocity", "mask"};

std::string lowerCase(std::string text) {
    for (char& character : text) {
        if (character >= 'A' && character <= 'Z') character = static_cast<char>(character - 'A' + 'a');
    }
    return text;
}

bool endsWith(const std::string& text, const char* ending) {
    const std::size_t length = std::strlen(ending);
    return text.length() >= length && text.compare(text.length() - length, length, ending) == 0;
}

bool isDataLayer(const std::string& layerName) {
    const std::string name = lowerCase(layerName);
    if (name.find("crypto") != std::string::npos) return true;
    // ObjectID, object_id, but not a "grid".
    if (endsWith(layerName, "ID") || endsWith(layerName, "Id") || endsWith(name, "_id")) return true;
    const std::string lastPart = name.substr(name.find_last_of("._") + 1);
    for (const char* const dataName : c_dataLayerNames) {
        if (lastPart == dataName) return true;
    }
    return false;
}

} // namespace

int LayerContent::colorLane(DD::Image::Channel channel) {
    const std::string name = DD::Image::getName(channel);
    const std::string channelName = name.substr(name.rfind('.') + 1);
    for (int lane = 0; lane <= c_alphaLane; ++lane) {
        if (channelName == c_colorNames[lane]) return lane;
    }
    return -1;
}

bool LayerContent::isColor(const DD::Image::ChannelSet& channels) {
    bool hasColor = false;
    for (DD::Image::Channel channel = channels.first(); channel; channel = channels.next(channel)) {
        const int lane = colorLane(channel);
        if (lane < 0) return false;
        if (lane != c_alphaLane) hasColor = true;
        if (isDataLayer(DD::Image::getLayerName(channel))) return false;
    }
    return hasColor;
}
