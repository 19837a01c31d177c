#include "HostMetadata.h"

#include <sys/stat.h>

#include <array>
#include <charconv>
#include <cmath>
#include <cstring>
#include <optional>

namespace Image {

namespace {

template <typename Value>
Value valueAt(const std::string& bytes, std::size_t offset) {
    Value value;
    std::memcpy(&value, bytes.data() + offset, sizeof value);
    return value;
}

/// A type whose value is a run of equal numbers.
struct NumberList {
    const char* type;
    char kind; // i, f or d
    std::size_t count;
};
constexpr std::array<NumberList, 20> numberLists{
    {{"int", 'i', 1},     {"float", 'f', 1},       {"double", 'd', 1},   {"box2i", 'i', 4},
     {"box2f", 'f', 4},   {"v2i", 'i', 2},         {"v2f", 'f', 2},      {"v2d", 'd', 2},
     {"v3i", 'i', 3},     {"v3f", 'f', 3},         {"v3d", 'd', 3},      {"m33f", 'f', 9},
     {"m33d", 'd', 9},    {"m44f", 'f', 16},       {"m44d", 'd', 16},    {"chromaticities", 'f', 8},
     {"keycode", 'i', 7}, {"floatvector", 'f', 0}, {"rational", 'r', 2}, {"timecode", 'i', 2}}};

template <typename Stored, typename Shown>
std::vector<Shown> numbers(const std::string& bytes) {
    std::vector<Shown> list;
    for (std::size_t at = 0; at + sizeof(Stored) <= bytes.size(); at += sizeof(Stored))
        list.push_back(static_cast<Shown>(valueAt<Stored>(bytes, at)));
    return list;
}

double rationalValue(const std::string& bytes) {
    const double denominator = valueAt<std::uint32_t>(bytes, 4);
    return denominator == 0.0 ? 0.0 : valueAt<std::int32_t>(bytes, 0) / denominator;
}

/// The attribute as text, number or list; none for types without such a form (previews, unknown ones).
std::optional<MetadataValue> shownValue(const Attribute& attribute) {
    const std::string& bytes = attribute.value;
    if (attribute.type == "string") return bytes;
    if (attribute.type == "compression" || attribute.type == "lineOrder" || attribute.type == "envmap") {
        if (bytes.size() != 1) return std::nullopt;
        return std::int64_t{static_cast<std::uint8_t>(bytes[0])};
    }
    for (const NumberList& list : numberLists) {
        if (attribute.type != list.type) continue;
        const std::size_t size = list.kind == 'd' ? 8 : 4;
        if (list.count != 0 && bytes.size() != list.count * size) return std::nullopt;
        switch (list.kind) {
            case 'r':
                return rationalValue(bytes);
            case 'i':
                if (list.count == 1) return std::int64_t{valueAt<std::int32_t>(bytes, 0)};
                return numbers<std::int32_t, int>(bytes);
            case 'f':
                if (list.count == 1) return double{valueAt<float>(bytes, 0)};
                return numbers<float, double>(bytes);
            default:
                if (list.count == 1) return valueAt<double>(bytes, 0);
                return numbers<double, double>(bytes);
        }
    }
    return std::nullopt;
}

const char* typeText(PixelType type) {
    switch (type) {
        case PixelType::UInt8:
            return "8-bit fixed";
        case PixelType::UInt16:
            return "16-bit fixed";
        case PixelType::UInt32:
            return "32-bit integer";
        case PixelType::Half:
            return "16-bit half float";
        case PixelType::Float:
            break;
    }
    return "32-bit float";
}

/// "input/timecode" without a typed word: hosts that write a file store their own keys as text attributes.
std::string timecodeOf(const Part& part) {
    const Attribute* const word = part.findAttribute("timeCode");
    if (word != nullptr && word->type == "timecode" && word->value.size() == 8) {
        if (std::string text = timecodeText(valueAt<std::uint32_t>(word->value, 0)); !text.empty()) return text;
    }
    for (const char* const name : {"input/timecode", "timecode"}) {
        std::string text = part.text(name);
        if (text.empty()) continue;
        // A semicolon before the frames says drop-frame; the digits count the same.
        for (char& letter : text)
            if (letter == ';') letter = ':';
        return text;
    }
    return {};
}

std::string joinedByDots(const std::string& key) {
    std::string path = key;
    for (char& letter : path)
        if (letter == '.') letter = '/';
    return path;
}

/// What the host calls an attribute of a file of this format.
std::string shownName(const std::string& format, const std::string& name) {
    if (format == "exr") return "exr/" + name;
    if (format == "mov") return "quicktime/" + joinedByDots(name);
    if (name.starts_with(format + ":")) return format + "/" + name.substr(format.size() + 1);
    return format + "/" + name;
}

template <typename Number>
std::string shortest(Number number) {
    std::array<char, 64> buffer;
    const std::to_chars_result end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number);
    return {buffer.data(), end.ptr};
}

template <typename Number>
std::string spaced(const std::vector<Number>& list) {
    std::string text;
    for (const Number number : list) text += (text.empty() ? "" : " ") + shortest(number);
    return text;
}

} // namespace

Metadata hostMetadata(const Frame& header, const std::string& path, std::int64_t frameNumber) {
    Metadata keys;
    keys["input/filename"] = path;
    keys["input/filereader"] = header.format;
    keys["input/frame"] = frameNumber;
    struct stat status {};
    if (::stat(path.c_str(), &status) == 0) keys["input/filesize"] = std::int64_t{status.st_size};
    if (header.parts.empty()) return keys;
    const Part& part = header.parts.front();
    keys["input/width"] = part.displayWindow.width();
    keys["input/height"] = part.displayWindow.height();
    const Channel* colour = part.findChannel("R");
    if (colour == nullptr && !part.channels.empty()) colour = &part.channels.front();
    if (colour != nullptr) keys["input/bitsperchannel"] = typeText(colour->type);
    const std::string timecode = timecodeOf(part);
    if (!timecode.empty()) keys["input/timecode"] = timecode;
    const Attribute* const rate = part.findAttribute("framesPerSecond");
    if (rate != nullptr) {
        const std::optional<MetadataValue> value = shownValue(*rate);
        if (value && std::holds_alternative<double>(*value)) keys["input/frame_rate"] = *value;
    }
    for (const Attribute& attribute : part.attributes) {
        // Shown as input/timecode and input/frame_rate instead.
        if (attribute.type == "timecode" || attribute.name == "framesPerSecond") continue;
        if (header.format == "mov" && attribute.name == "timecode") continue;
        if (const std::optional<MetadataValue> value = shownValue(attribute))
            keys[shownName(header.format, attribute.name)] = *value;
    }
    return keys;
}

std::string timecodeText(std::uint32_t timeAndFlags) {
    // Tens have fewer bits than units; the bits above them are flags (drop-frame and colour frame, phase, groups).
    constexpr std::array<unsigned, 4> tensMasks{3, 7, 7, 3};
    std::string text;
    for (unsigned field = 0; field < 4; ++field) {
        const unsigned byte = timeAndFlags >> (24 - 8 * field);
        const unsigned tens = (byte >> 4) & tensMasks[field];
        const unsigned units = byte & 0xfu;
        if (units > 9) return {};
        if (field != 0) text += ':';
        text += static_cast<char>('0' + tens);
        text += static_cast<char>('0' + units);
    }
    return text;
}

std::string metadataText(const MetadataValue& value) {
    if (const auto* text = std::get_if<std::string>(&value)) return *text;
    if (const auto* integer = std::get_if<std::int64_t>(&value)) return shortest(*integer);
    if (const auto* number = std::get_if<double>(&value)) return shortest(*number);
    if (const auto* integers = std::get_if<std::vector<int>>(&value)) return spaced(*integers);
    return spaced(std::get<std::vector<double>>(value));
}

} // namespace Image
