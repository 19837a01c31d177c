#include "DDImage/Channel.h"

#include <deque>
#include <mutex>
#include <string>
#include <unordered_map>

namespace DD {
namespace Image {

namespace {

struct Name {
    std::string whole;
    std::string layer;
};

/// All channels named so far. A deque: names stay where they are.
class Registry {
public:
    Registry() {
        for (const char* name : {"black", "rgba.red", "rgba.green", "rgba.blue", "rgba.alpha", "depth.Z"}) find(name);
    }

    Channel find(const std::string& name) {
        const std::lock_guard<std::mutex> lock(m_access);
        const auto [place, isNew] = m_channels.try_emplace(name, static_cast<Channel>(m_names.size()));
        if (isNew) {
            const std::size_t dot = name.rfind('.');
            m_names.push_back({name, dot == std::string::npos ? "" : name.substr(0, dot)});
        }
        return place->second;
    }

    const Name& name(Channel channel) {
        static const Name none{"unknown", ""};
        const std::lock_guard<std::mutex> lock(m_access);
        return channel < m_names.size() ? m_names[channel] : none;
    }

    unsigned count() {
        const std::lock_guard<std::mutex> lock(m_access);
        return static_cast<unsigned>(m_names.size());
    }

private:
    std::mutex m_access;
    std::deque<Name> m_names;
    std::unordered_map<std::string, Channel> m_channels;
};

Registry& registry() {
    static Registry instance;
    return instance;
}

} // namespace

Channel channel(const char* name) { return registry().find(name); }

const char* getName(Channel channel) { return registry().name(channel).whole.c_str(); }

const char* getLayerName(Channel channel) { return registry().name(channel).layer.c_str(); }

unsigned channelCount() { return registry().count(); }

} // namespace Image
} // namespace DD
