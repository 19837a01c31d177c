#include "Chain/InputSpace.h"

#include <fmt/format.h>

#include <algorithm>
#include <string_view>
#include <vector>

#include "Chain/ShadingLayers.h"
#include "ParallelFor.h"
#include "Text/lowerCase.h"

namespace Tools {
namespace {

constexpr std::size_t colours = 3;
constexpr const char* spaceAttribute = "oiio:ColorSpace";

/// 0, 1, 2 for a layer's red, green, blue, unless the layer holds data; -1 for any other channel.
int colourOf(DD::Image::Channel channel, bool isDataPart) {
    constexpr std::array<std::string_view, colours> names = {"red", "green", "blue"};
    const std::string_view name = DD::Image::getName(channel);
    const auto* const colour = std::find(names.begin(), names.end(), name.substr(name.rfind('.') + 1));
    if (colour == names.end()) return -1;
    const std::string layer = DD::Image::getLayerName(channel);
    if (layer == "rgba" ? isDataPart : ShadingLayers::isDataLayer(layer)) return -1;
    return static_cast<int>(colour - names.begin());
}

/// Where a plane has red, green and blue; -1: it does not. All -1: it does not hold colour.
std::array<int, colours> coloursOf(const DD::Image::ImagePlane& plane, bool isDataPart) {
    std::array<int, colours> components{-1, -1, -1};
    const DD::Image::ChannelSet channels = plane.channels();
    for (DD::Image::Channel channel = channels.first(); channel; channel = channels.next(channel)) {
        const int colour = colourOf(channel, isDataPart);
        if (colour >= 0) components[static_cast<std::size_t>(colour)] = plane.chanNo(channel);
    }
    return components;
}

/// Calls convert(pixels, count) for each row of the plane within the box, as R, G, B, R, G, B ...; a colour that the
/// plane does not have is that of another one, so that a grey picture is converted as grey.
template <typename Convert>
void convertRows(DD::Image::ImagePlane& plane, DD::Image::Box box, unsigned int threads, bool isDataPart,
                 Convert convert) {
    std::array<int, colours> components = coloursOf(plane, isDataPart);
    const int any = *std::max_element(components.begin(), components.end());
    if (any < 0 || !box.intersects(plane.bounds())) return;
    box.intersect(plane.bounds());
    const std::array<int, colours> present = components;
    for (int& component : components)
        if (component < 0) component = any;
    float* const floats = plane.writable();
    const std::size_t columns = static_cast<std::size_t>(box.w());
    Image::parallelFor(threads, static_cast<std::size_t>(box.h()), [&](Image::WorkQueue& queue) {
        std::vector<float> pixels(columns * colours);
        for (std::size_t index = 0; queue.next(index);) {
            float* const row =
                floats + (box.y() - plane.bounds().y() + static_cast<int>(index)) * std::ptrdiff_t{plane.rowStride()} +
                (box.x() - plane.bounds().x()) * std::ptrdiff_t{plane.colStride()};
            const auto sample = [&](std::size_t x, int component) -> float& {
                return row[static_cast<std::ptrdiff_t>(x) * plane.colStride() +
                           std::ptrdiff_t{component} * plane.chanStride()];
            };
            for (std::size_t x = 0; x < columns; ++x)
                for (std::size_t colour = 0; colour < colours; ++colour)
                    pixels[x * colours + colour] = sample(x, components[colour]);
            convert(pixels.data(), columns);
            for (std::size_t colour = 0; colour < colours; ++colour) {
                if (present[colour] < 0) continue;
                for (std::size_t x = 0; x < columns; ++x) sample(x, present[colour]) = pixels[x * colours + colour];
            }
        }
    });
}

bool containsOneOf(const std::string& text, std::initializer_list<const char*> words) {
    return std::any_of(words.begin(), words.end(),
                       [&](const char* word) { return text.find(word) != std::string::npos; });
}

/// Whether a name as pictures carry it, of a colour space or a transfer function, is known to mean other than linear
/// light. What is not known is taken as linear.
bool isKnownNotLinear(const std::string& name) {
    const std::string text = Text::lowerCase(name);
    if (containsOneOf(text, {"lin"})) return false; // "Linear sRGB", "lin_rec709_scene"
    return containsOneOf(
        text, {"log",  "density", "cineon", "adx",    "srgb", "709", "601",  "274m",    "video",  "gamma",  "g18_",
               "g22_", "g24_",    "g26_",   "acescc", "pq",   "hlg", "2084", "display", "output", "std-b67"});
}

/// What the part says about its pixels, as far as that is not "linear"; empty: nothing.
std::string statementAgainstLinear(const Image::Part& part) {
    for (const Image::Attribute& attribute : part.attributes) {
        if (attribute.type != "string") continue;
        const std::string name = Text::lowerCase(attribute.name.substr(attribute.name.rfind(':') + 1));
        // A movie's pixels are linear only if it says so.
        const bool isMovieTransfer = name == "color_transfer" && attribute.value != "linear";
        const bool isSpace = name == "colorspace" || name == "colorinteropid" || name == "transfer";
        if (isMovieTransfer || (isSpace && isKnownNotLinear(attribute.value)))
            return fmt::format("{} is \"{}\"", attribute.name, attribute.value);
    }
    return {};
}

} // namespace

InputSpace::InputSpace(const ChainSettings& settings) {
    if (!settings.inputSpace || *settings.inputSpace == ChainSettings::rawInputSpace) return;
    m_space = Image::openColourSpace(*settings.inputSpace, settings.colourConfig);
    m_configFile = Image::colourConfigFile(settings.colourConfig);
    m_space->fromSceneLinear(m_black.data(), 1);
}

void InputSpace::toSceneLinear(DD::Image::ImagePlane& plane, const DD::Image::Box& picture, unsigned int threads,
                               bool isDataPart) const {
    if (!m_space) return;
    convertRows(plane, picture, threads, isDataPart,
                [this](float* pixels, std::size_t count) { m_space->toSceneLinear(pixels, count); });
}

void InputSpace::fromSceneLinear(DD::Image::ImagePlane& plane, unsigned int threads, bool isDataPart) const {
    if (!m_space) return;
    convertRows(plane, plane.bounds(), threads, isDataPart,
                [this](float* pixels, std::size_t count) { m_space->fromSceneLinear(pixels, count); });
}

float InputSpace::black(DD::Image::Channel channel, bool isDataPart) const {
    const int colour = colourOf(channel, isDataPart);
    return colour < 0 ? 0.0f : m_black[static_cast<std::size_t>(colour)];
}

bool InputSpace::isLinear(const ChainSettings& settings, const Image::Frame& frame) {
    if (settings.renderMap) return true;
    if (settings.inputSpace) return false;
    const auto isLinearPart = [&frame](const Image::Part& part) {
        if (frame.format == "exr") return statementAgainstLinear(part).empty();
        return Text::lowerCase(part.text(spaceAttribute)) == "linear";
    };
    return std::all_of(frame.parts.begin(), frame.parts.end(), isLinearPart);
}

void InputSpace::stateLinear(Image::Frame& frame) {
    for (Image::Part& part : frame.parts) part.setAttribute({spaceAttribute, "string", "Linear"});
}

std::string InputSpace::objection(const ChainSettings& settings, const Image::Frame& frame) {
    if (settings.shading == ChainSettings::Shading::None || settings.renderMap || settings.inputSpace) return {};
    std::string statement = frame.format == "cineon" ? "Cineon files hold printing density" : "";
    for (const Image::Part& part : frame.parts)
        if (statement.empty()) statement = statementAgainstLinear(part);
    if (statement.empty()) return {};
    return fmt::format(
        "The pixels are not linear ({}), but shading is a factor on linear light. Name their colour space with "
        "--input-space NAME, which converts them to linear light and back, or give --input-space raw to correct the "
        "values as they are.",
        statement);
}

} // namespace Tools
