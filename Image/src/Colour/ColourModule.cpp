// The module for colour spaces: OpenColorIO, through OpenImageIO.

#include <OpenImageIO/color.h>
#include <OpenImageIO/strutil.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <optional>
#include <string>
#include <vector>

#include "Colour/ColourSpace.h"
#include "ImageError.h"

namespace Image {

namespace {

constexpr const char* sceneLinear = "scene_linear";
constexpr const char* builtInConfig =
#include "Colour/default.ocio.inc"
    ;

/// The text as a file, since the library reads configurations from files only.
class TextAsFile {
public:
    explicit TextAsFile(const std::string& text) : m_descriptor(::memfd_create("default.ocio", MFD_CLOEXEC)) {
        if (m_descriptor < 0 || ::write(m_descriptor, text.data(), text.size()) != static_cast<ssize_t>(text.size()))
            throw ImageError("built-in colour configuration", std::strerror(errno));
    }
    TextAsFile(const TextAsFile&) = delete;
    TextAsFile& operator=(const TextAsFile&) = delete;
    ~TextAsFile() { ::close(m_descriptor); }

    std::string path() const { return "/proc/self/fd/" + std::to_string(m_descriptor); }

private:
    int m_descriptor;
};

/// "a, b, c", so many at most, and how many more there are.
std::string listOf(const std::vector<std::string>& names) {
    constexpr std::size_t most = 40;
    std::string list;
    for (std::size_t i = 0; i < std::min(names.size(), most); ++i) list += (i == 0 ? "" : ", ") + names[i];
    return names.size() > most ? list + " and " + std::to_string(names.size() - most) + " more" : list;
}

class ConfiguredSpace : public ColourSpace {
public:
    ConfiguredSpace(const std::string& name, const std::string& configFile)
        : m_configName(configFile.empty() ? "the built-in colour configuration" : configFile) {
        std::optional<TextAsFile> builtIn;
        if (configFile.empty()) builtIn.emplace(builtInConfig);
        OIIO::ColorConfig config(builtIn ? builtIn->path() : configFile);
        if (config.error())
            throw ImageError(m_configName, "cannot be read as an OpenColorIO configuration (" +
                                               oneLine(config.geterror()) +
                                               "); give another one with --ocio, or set OCIO to one");
        const std::vector<std::string> roles = config.getRoles();
        if (std::find(roles.begin(), roles.end(), sceneLinear) == roles.end())
            throw ImageError(m_configName, "has no role \"scene_linear\", which defines linear light; add it");
        checkThatItIsKnown(config, name);
        m_toLinear = config.createColorProcessor(name, sceneLinear);
        if (m_toLinear) m_fromLinear = config.createColorProcessor(sceneLinear, name);
        if (!m_fromLinear)
            throw ImageError(m_configName,
                             "colour space \"" + name + "\" cannot be used (" + oneLine(config.geterror()) + ")");
        checkThatItIsRestored(name);
    }

    void toSceneLinear(float* pixels, std::size_t count) const override { apply(*m_toLinear, pixels, count); }
    void fromSceneLinear(float* pixels, std::size_t count) const override { apply(*m_fromLinear, pixels, count); }

private:
    /// The library has ideas of its own about names such as "sRGB" that the configuration does not have.
    void checkThatItIsKnown(const OIIO::ColorConfig& config, const std::string& name) const {
        const auto isIn = [&](const std::vector<std::string>& list) {
            return std::any_of(list.begin(), list.end(),
                               [&](const std::string& other) { return OIIO::Strutil::iequals(other, name); });
        };
        const std::vector<std::string> names = config.getColorSpaceNames();
        if (isIn(names) || isIn(config.getRoles()) ||
            std::any_of(names.begin(), names.end(),
                        [&](const std::string& space) { return isIn(config.getAliases(space)); }))
            return;
        throw ImageError(m_configName, "has no colour space \"" + name + "\"; it has " + listOf(names));
    }

    static void apply(const OIIO::ColorProcessor& processor, float* pixels, std::size_t count) {
        constexpr OIIO::stride_t sample = sizeof(float);
        constexpr int channels = 3;
        // Rows of a length that the library counts with int.
        for (std::size_t done = 0; done < count;) {
            const int width = static_cast<int>(std::min<std::size_t>(count - done, 1 << 20));
            processor.apply(pixels + done * channels, width, 1, channels, sample, channels * sample,
                            channels * sample * width);
            done += static_cast<std::size_t>(width);
        }
    }

    /// A space that clips or is defined one way only would change the picture where the lens does not.
    void checkThatItIsRestored(const std::string& name) const {
        constexpr int steps = 1023;
        constexpr float halfAStep = 0.5f / steps; // of 10 bit: less is not seen
        std::vector<float> greys;
        for (int step = 0; step <= steps; ++step) greys.insert(greys.end(), 3, static_cast<float>(step) / steps);
        std::vector<float> restored = greys;
        toSceneLinear(restored.data(), restored.size() / 3);
        fromSceneLinear(restored.data(), restored.size() / 3);
        for (std::size_t i = 0; i < greys.size(); ++i) {
            if (std::abs(restored[i] - greys[i]) < halfAStep) continue;
            throw ImageError(m_configName, "colour space \"" + name + "\" cannot be used: converting " +
                                               std::to_string(greys[i]) + " to linear light and back gives " +
                                               std::to_string(restored[i]));
        }
    }

    std::string m_configName;
    OIIO::ColorProcessorHandle m_toLinear, m_fromLinear;
};

} // namespace

extern "C" {
__attribute__((visibility("default"))) ColourSpace* orvexOpenColourSpace(const std::string& name,
                                                                         const std::string& configFile);
}

ColourSpace* orvexOpenColourSpace(const std::string& name, const std::string& configFile) {
    return new ConfiguredSpace(name, configFile);
}

} // namespace Image
