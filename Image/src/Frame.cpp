#include "Frame.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <map>
#include <tuple>
#include <utility>

#include "HalfConversion.h"

namespace Image {

namespace {

constexpr std::size_t maxComponents = 4;

std::int64_t floorDivide(std::int64_t a, std::int64_t b) { return a >= 0 ? a / b : -((-a + b - 1) / b); }

template <typename Integer>
void integersToFloat(const void* samples, float* floats, std::size_t n, float scale) {
    const Integer* source = static_cast<const Integer*>(samples);
    for (std::size_t i = 0; i < n; ++i) floats[i] = static_cast<float>(source[i]) * scale;
}

template <typename Integer>
void integersFromFloat(const float* floats, void* samples, std::size_t n, float scale, float maximum) {
    Integer* target = static_cast<Integer*>(samples);
    for (std::size_t i = 0; i < n; ++i) {
        // The comparison sends NaN to 0.
        const float scaled = floats[i] * scale;
        target[i] = scaled > 0.0f ? static_cast<Integer>(std::min(scaled, maximum) + 0.5f) : Integer{0};
    }
}

} // namespace

std::size_t samplesBetween(std::int64_t minimum, std::int64_t maximum, std::int64_t sampling) {
    if (maximum < minimum) return 0;
    if (sampling <= 1) return static_cast<std::size_t>(maximum - minimum + 1);
    return static_cast<std::size_t>(floorDivide(maximum, sampling) - floorDivide(minimum - 1, sampling));
}

std::size_t bytesPerSample(PixelType type) {
    switch (type) {
        case PixelType::UInt8:
            return 1;
        case PixelType::UInt16:
        case PixelType::Half:
            return 2;
        case PixelType::UInt32:
        case PixelType::Float:
            break;
    }
    return 4;
}

void samplesToFloat(PixelType type, const void* samples, float* floats, std::size_t n) {
    switch (type) {
        case PixelType::UInt8:
            integersToFloat<std::uint8_t>(samples, floats, n, 1.0f / 255.0f);
            break;
        case PixelType::UInt16:
            integersToFloat<std::uint16_t>(samples, floats, n, 1.0f / 65535.0f);
            break;
        case PixelType::UInt32:
            integersToFloat<std::uint32_t>(samples, floats, n, 1.0f);
            break;
        case PixelType::Half:
            halfToFloat(static_cast<const std::uint16_t*>(samples), floats, n);
            break;
        case PixelType::Float:
            std::memcpy(floats, samples, n * sizeof(float));
            break;
    }
}

void samplesFromFloat(PixelType type, const float* floats, void* samples, std::size_t n) {
    switch (type) {
        case PixelType::UInt8:
            integersFromFloat<std::uint8_t>(floats, samples, n, 255.0f, 255.0f);
            break;
        case PixelType::UInt16:
            integersFromFloat<std::uint16_t>(floats, samples, n, 65535.0f, 65535.0f);
            break;
        case PixelType::UInt32: {
            std::uint32_t* target = static_cast<std::uint32_t*>(samples);
            for (std::size_t i = 0; i < n; ++i) {
                const double value = std::round(static_cast<double>(floats[i]));
                target[i] = value > 0.0 ? static_cast<std::uint32_t>(std::min(value, 4294967295.0)) : 0u;
            }
            break;
        }
        case PixelType::Half:
            floatToHalf(floats, static_cast<std::uint16_t*>(samples), n);
            break;
        case PixelType::Float:
            std::memcpy(samples, floats, n * sizeof(float));
            break;
    }
}

std::string_view Channel::layer() const {
    const std::size_t dot = name.rfind('.');
    return dot == std::string::npos ? std::string_view() : std::string_view(name).substr(0, dot);
}

std::string_view Channel::baseName() const {
    const std::size_t dot = name.rfind('.');
    return dot == std::string::npos ? std::string_view(name) : std::string_view(name).substr(dot + 1);
}

std::size_t Channel::colourPlace() const {
    constexpr std::string_view upper = "RGBA";
    constexpr std::string_view lower = "rgba";
    const std::string_view base = baseName();
    if (base.size() != 1) return maxComponents;
    return std::min({upper.find(base), lower.find(base), maxComponents});
}

void Plane::rowToFloat(std::size_t y, float* samples) const {
    samplesToFloat(type, row(y), samples, width * components);
}

void Plane::rowFromFloat(std::size_t y, const float* samples) {
    samplesFromFloat(type, samples, row(y), width * components);
}

std::vector<Channel> floatRgbaChannels() {
    std::vector<Channel> channels;
    for (const char* const name : {"A", "B", "G", "R"}) {
        Channel& channel = channels.emplace_back();
        channel.name = name;
        channel.type = PixelType::Float;
    }
    return channels;
}

void Plane::allocatePixels() { pixels.resize(rowBytes() * height); }

std::size_t Part::firstChannelOf(std::size_t plane) const {
    const auto first = std::find_if(channels.begin(), channels.end(),
                                    [plane](const Channel& channel) { return channel.plane == plane; });
    return static_cast<std::size_t>(first - channels.begin());
}

const Channel* Part::findChannel(std::string_view channelName) const {
    const auto found = std::find_if(channels.begin(), channels.end(),
                                    [channelName](const Channel& channel) { return channel.name == channelName; });
    return found == channels.end() ? nullptr : &*found;
}

const Attribute* Part::findAttribute(std::string_view attributeName) const {
    const auto found = std::find_if(attributes.begin(), attributes.end(), [attributeName](const Attribute& attribute) {
        return attribute.name == attributeName;
    });
    return found == attributes.end() ? nullptr : &*found;
}

void Part::setAttribute(const Attribute& attribute) {
    for (Attribute& existing : attributes) {
        if (existing.name != attribute.name) continue;
        existing = attribute;
        return;
    }
    attributes.push_back(attribute);
}

void Part::removeAttribute(std::string_view attributeName) {
    std::erase_if(attributes, [attributeName](const Attribute& attribute) { return attribute.name == attributeName; });
}

std::string Part::text(std::string_view attributeName) const {
    const Attribute* attribute = findAttribute(attributeName);
    return attribute != nullptr && attribute->type == "string" ? attribute->value : std::string();
}

void Part::layOutPlanes() {
    std::size_t planeCount = 0;
    const auto place = [&](const std::vector<std::size_t>& members) {
        if (planeCount == planes.size()) planes.emplace_back();
        Plane& plane = planes[planeCount];
        const Channel& first = channels[members.front()];
        plane.type = first.type;
        plane.components = members.size();
        plane.width = samplesBetween(dataWindow.minX, dataWindow.maxX, first.xSampling);
        plane.height = samplesBetween(dataWindow.minY, dataWindow.maxY, first.ySampling);
        for (std::size_t i = 0; i < members.size(); ++i) {
            channels[members[i]].plane = planeCount;
            channels[members[i]].component = i;
        }
        ++planeCount;
    };
    // What may share a plane, in the order in which each kind comes first. Found by a map, since a hostile header has
    // a thousand channels of different layers.
    using Kind = std::tuple<PixelType, std::int32_t, std::int32_t, std::string_view>;
    std::map<Kind, std::size_t> numbers;
    std::vector<std::vector<std::size_t>> companions;
    for (std::size_t i = 0; i < channels.size(); ++i) {
        const Channel& channel = channels[i];
        const auto [known, isNew] =
            numbers.try_emplace({channel.type, channel.xSampling, channel.ySampling, channel.layer()}, numbers.size());
        if (isNew) companions.emplace_back();
        companions[known->second].push_back(i);
    }
    for (const std::vector<std::size_t>& indices : companions) {
        // R, G, B, A apart from the rest of the layer.
        std::array<std::vector<std::size_t>, maxComponents> colours;
        std::vector<std::size_t> others;
        for (const std::size_t index : indices) {
            const std::size_t colour = channels[index].colourPlace();
            if (colour < maxComponents)
                colours[colour].push_back(index);
            else
                others.push_back(index);
        }
        std::vector<std::size_t> members;
        for (const std::vector<std::size_t>& colour : colours)
            if (!colour.empty()) members.push_back(colour.front());
        if (!members.empty()) place(members);
        for (const std::vector<std::size_t>& colour : colours)
            if (colour.size() > 1) others.insert(others.end(), colour.begin() + 1, colour.end());
        for (std::size_t start = 0; start < others.size(); start += maxComponents) {
            const std::size_t end = std::min(start + maxComponents, others.size());
            place({others.begin() + static_cast<std::ptrdiff_t>(start),
                   others.begin() + static_cast<std::ptrdiff_t>(end)});
        }
    }
    planes.resize(planeCount);
}

void Part::allocatePixels() {
    for (Plane& plane : planes) plane.allocatePixels();
}

void Frame::assignHeader(const Frame& header) {
    std::vector<Part> old = std::move(parts);
    parts = header.parts;
    format = header.format;
    for (std::size_t part = 0; part < std::min(old.size(), parts.size()); ++part)
        for (std::size_t plane = 0; plane < std::min(old[part].planes.size(), parts[part].planes.size()); ++plane)
            parts[part].planes[plane].pixels = std::move(old[part].planes[plane].pixels);
}

} // namespace Image
