#include "MetadataSidecar.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <nlohmann/json.hpp>

#include "Files.h"
#include "FrameReader.h"
#include "ImageError.h"

namespace Image {

namespace {

using Json = nlohmann::ordered_json;

constexpr std::uint64_t maxSize = std::uint64_t{64} << 20;
constexpr const char* allowedValues = "text, a number, true, false or a list of numbers";

/// The value, or an exception that names the key.
MetadataValue valueOf(const std::string& path, const std::string& key, const Json& json) {
    if (json.is_string()) return json.get<std::string>();
    if (json.is_boolean()) return std::int64_t{json.get<bool>() ? 1 : 0};
    if (json.is_number_unsigned() &&
        json.get<std::uint64_t>() > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max()))
        return json.get<double>();
    if (json.is_number_integer()) return json.get<std::int64_t>();
    if (json.is_number()) return json.get<double>();
    if (!json.is_array()) throw ImageError(path, "\"" + key + "\" must be " + allowedValues);
    std::vector<int> integers;
    std::vector<double> numbers;
    for (const Json& each : json) {
        if (!each.is_number()) throw ImageError(path, "\"" + key + "\" must be " + allowedValues);
        numbers.push_back(each.get<double>());
        if (each.is_number_integer() && numbers.back() >= std::numeric_limits<int>::min() &&
            numbers.back() <= std::numeric_limits<int>::max())
            integers.push_back(each.get<int>());
    }
    if (integers.size() == numbers.size()) return integers;
    return numbers;
}

Metadata valuesOf(const std::string& path, const Json& json) {
    Metadata values;
    for (const auto& [key, value] : json.items()) values[key] = valueOf(path, key, value);
    return values;
}

std::string textOf(const std::string& path) {
    const InputFile file(path);
    if (file.size() > maxSize)
        throw ImageError(path,
                         "is larger than " + std::to_string(maxSize >> 20) + " MiB, too large for camera metadata");
    std::string text(static_cast<std::size_t>(file.size()), '\0');
    text.resize(file.read(text.data(), text.size(), 0));
    return text;
}

bool isDigit(char letter) { return letter >= '0' && letter <= '9'; }

} // namespace

MetadataSidecar::MetadataSidecar(const std::string& path) {
    const std::string text = textOf(path);
    Json json;
    try {
        json = Json::parse(text);
    } catch (const Json::parse_error& error) {
        const std::string read = text.substr(0, error.byte == 0 ? 0 : error.byte - 1);
        throw ImageError(path, "is not valid JSON (line " +
                                   std::to_string(1 + std::count(read.begin(), read.end(), '\n')) +
                                   "); expected {\"maker key\": value, ...}");
    } catch (const Json::out_of_range&) {
        throw ImageError(path, "has a number that is too large");
    }
    if (!json.is_object()) throw ImageError(path, "must be a JSON object: {\"maker key\": value, ...}");
    const auto frames = json.find("frames");
    if (frames != json.end()) {
        if (!frames->is_object()) throw ImageError(path, "\"frames\" must be an object: {\"1001\": {...}, ...}");
        for (const auto& [number, values] : frames->items()) {
            std::int64_t frame = 0;
            const std::from_chars_result end = std::from_chars(number.data(), number.data() + number.size(), frame);
            if (number.empty() || end.ec != std::errc() || end.ptr != number.data() + number.size())
                throw ImageError(path, "\"frames\" has \"" + number + "\", which is not a frame number");
            if (!values.is_object()) throw ImageError(path, "frame " + number + " must be an object of values");
            m_frames[frame] = valuesOf(path, values);
        }
        json.erase("frames");
    }
    m_clip = valuesOf(path, json);
}

Metadata MetadataSidecar::values(std::int64_t frameNumber) const {
    Metadata values;
    const auto frame = m_frames.find(frameNumber);
    if (frame != m_frames.end()) values = frame->second;
    // What the frame has already stands.
    values.insert(m_clip.begin(), m_clip.end());
    return values;
}

std::string MetadataSidecar::pathFor(const std::string& clip) {
    const std::size_t slash = clip.rfind('/');
    const std::size_t start = slash == std::string::npos ? 0 : slash + 1;
    std::string stem = clip.substr(start);
    const std::size_t dot = stem.rfind('.');
    if (dot != std::string::npos) stem.resize(dot);
    if (!isMovie(clip)) {
        // The frame's pattern or number, and what separates it from the clip's name.
        std::size_t end = stem.size();
        if (end > 0 && stem[end - 1] == 'd') {
            const std::size_t percent = stem.rfind('%');
            if (percent != std::string::npos) end = percent;
        } else {
            while (end > 0 && (isDigit(stem[end - 1]) || stem[end - 1] == '#' || stem[end - 1] == '@')) --end;
            // A name that is nothing but digits, or whose digits belong to it (A001), stays.
            if (end < stem.size() && end > 0 && stem[end - 1] != '.' && stem[end - 1] != '_' && stem[end - 1] != '-' &&
                isDigit(stem[end]))
                end = stem.size();
        }
        if (end > 0 && end < stem.size()) {
            if (stem[end - 1] == '.' || stem[end - 1] == '_' || stem[end - 1] == '-') --end;
            if (end > 0) stem.resize(end);
        }
    }
    return clip.substr(0, start) + stem + ".metadata.json";
}

} // namespace Image
