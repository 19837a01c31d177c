#include "Movie/MovieHeader.h"

#include <array>
#include <charconv>
#include <cstring>
#include <optional>

namespace Image {

namespace {

constexpr const char* packedName = "timeCode";
constexpr const char* textName = "input/timecode";
constexpr std::uint32_t dropFrameFlag = 0x40;

struct Timecode {
    std::array<std::int64_t, 4> fields{}; ///< hours, minutes, seconds, frames
    bool isDropFrame = false;
};

std::optional<Timecode> parse(const std::string& text) {
    Timecode timecode;
    const char* at = text.data();
    const char* const end = at + text.size();
    for (std::size_t i = 0; i < timecode.fields.size(); ++i) {
        std::int64_t& field = timecode.fields[i];
        const std::from_chars_result result = std::from_chars(at, end, field);
        if (result.ec != std::errc() || field < 0 || field > 999) return std::nullopt;
        at = result.ptr;
        if (i == 3) break;
        if (at == end || (*at != ':' && *at != ';' && *at != '.')) return std::nullopt;
        timecode.isDropFrame = i == 2 && *at != ':';
        ++at;
    }
    return at == end ? std::optional(timecode) : std::nullopt;
}

template <typename Value>
Value valueAt(const std::string& bytes, std::size_t offset) {
    Value value;
    std::memcpy(&value, bytes.data() + offset, sizeof value);
    return value;
}

template <typename Value>
std::string bytesOf(const Value& value) {
    return {reinterpret_cast<const char*>(&value), sizeof value};
}

/// As put() has left it.
std::optional<Timecode> timecodeOf(const Part& part) {
    const Attribute* const packed = part.findAttribute(packedName);
    if (packed == nullptr || packed->type != "timecode" || packed->value.size() != 8) return parse(part.text(textName));
    const std::uint32_t word = valueAt<std::uint32_t>(packed->value, 0);
    Timecode timecode;
    timecode.isDropFrame = (word & dropFrameFlag) != 0;
    for (std::size_t i = 0; i < timecode.fields.size(); ++i) {
        const std::uint32_t digits = word >> (24 - 8 * i) & (i == 3 ? 0x3fu : 0xffu);
        timecode.fields[i] = digits / 16 * 10 + digits % 16;
    }
    return timecode;
}

void put(Part& part, const Timecode& timecode) {
    part.removeAttribute(packedName);
    part.removeAttribute(textName);
    const std::array<std::int64_t, 4>& fields = timecode.fields;
    if (fields[3] < 40) {
        std::uint32_t word = timecode.isDropFrame ? dropFrameFlag : 0u;
        for (std::size_t i = 0; i < 4; ++i)
            word |= static_cast<std::uint32_t>(fields[i] / 10 * 16 + fields[i] % 10) << (24 - 8 * i);
        part.setAttribute({packedName, "timecode", bytesOf(word) + std::string(4, '\0')});
        return;
    }
    std::string text;
    for (std::size_t i = 0; i < 4; ++i) {
        if (i != 0) text += i == 3 && timecode.isDropFrame ? ';' : ':';
        text += (fields[i] < 10 ? "0" : "") + std::to_string(fields[i]);
    }
    part.setAttribute({textName, "string", text});
}

/// Frames that are counted in a second; 0: not stated.
std::int64_t rateOf(const Part& part) {
    const Attribute* const rate = part.findAttribute("framesPerSecond");
    if (rate == nullptr || rate->type != "rational" || rate->value.size() != 8) return 0;
    const std::int64_t numerator = valueAt<std::int32_t>(rate->value, 0);
    const std::int64_t denominator = valueAt<std::uint32_t>(rate->value, 4);
    return denominator == 0 || numerator < 0 ? 0 : (numerator + denominator / 2) / denominator;
}

/// The timecode `frames` later, at `rate` counted frames a second; drop-frame leaves out two numbers (of 30) a minute
/// but not in every tenth.
Timecode advanced(const Timecode& timecode, std::int64_t rate, std::int64_t frames) {
    const std::array<std::int64_t, 4>& start = timecode.fields;
    const std::int64_t drop = timecode.isDropFrame ? (rate + 7) / 15 : 0;
    const std::int64_t minutes = start[0] * 60 + start[1];
    std::int64_t number = (minutes * 60 + start[2]) * rate + start[3] - drop * (minutes - minutes / 10) + frames;
    const std::int64_t tenMinutes = rate * 600 - drop * 9;
    const std::int64_t day = tenMinutes * 144;
    number = ((number % day) + day) % day;
    if (drop != 0) {
        const std::int64_t tens = number / tenMinutes;
        const std::int64_t rest = number % tenMinutes;
        const std::int64_t oneMinute = rate * 60 - drop;
        number += drop * 9 * tens;
        if (rest >= rate * 60) number += drop * (1 + (rest - rate * 60) / oneMinute);
    }
    return {{number / (rate * 3600), number / (rate * 60) % 60, number / rate % 60, number % rate},
            timecode.isDropFrame};
}

} // namespace

Frame movieHeader(const Frame& first, std::int64_t index) {
    Frame frame = first;
    if (frame.parts.empty()) return frame;
    Part& part = frame.parts.front();
    const std::int64_t rate = rateOf(part);
    const std::optional<Timecode> start = timecodeOf(part);
    if (start && rate > 0) put(part, advanced(*start, rate, index));
    return frame;
}

void setStartTimecode(Part& part, const std::string& text) {
    const std::int64_t rate = rateOf(part);
    const std::optional<Timecode> start = parse(text);
    if (start && rate > 0) put(part, advanced(*start, rate, 0));
}

} // namespace Image
