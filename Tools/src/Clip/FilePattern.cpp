#include "Clip/FilePattern.h"

#include <fmt/format.h>

#include <charconv>
#include <string_view>

#include "Report/Failure.h"

namespace Tools {
namespace {

/// Where a place for the number stands in a text, and how many digits it wants.
struct Place {
    std::size_t position = std::string::npos;
    std::size_t length = 0;
    unsigned int digits = 0;
    enum class Kind { Usable, BlankPadded, InputOnly } kind = Kind::Usable;

    bool found() const { return position != std::string::npos; }
};

bool isDigit(char character) { return character >= '0' && character <= '9'; }

/// More digits than this cannot be meant, and would make huge names.
constexpr unsigned int maximumDigits = 32;

/// Digits beginning at `position`, moved behind them. No digit: 0.
unsigned int takeCount(const std::string& text, std::size_t& position) {
    unsigned int count = 0;
    for (; position < text.size() && isDigit(text[position]); ++position) {
        if (count <= maximumDigits) count = count * 10 + static_cast<unsigned int>(text[position] - '0');
    }
    return count;
}

Place placeAt(const std::string& text, std::size_t position) {
    Place place;
    std::size_t end = position + 1;
    if (text[position] == '%') {
        const bool zeroPadded = end < text.size() && text[end] == '0';
        place.digits = takeCount(text, end);
        if (end >= text.size() || text[end] != 'd') return {};
        ++end;
        if (place.digits > 1 && !zeroPadded) place.kind = Place::Kind::BlankPadded;
    } else if (text[position] == '#' || text[position] == '@') {
        while (end < text.size() && text[end] == text[position]) ++end;
        place.digits = static_cast<unsigned int>(end - position);
        if (text[position] == '#' && place.digits == 1) place.digits = 4;
    } else if (text[position] == '$' && end < text.size() && text[end] == 'F') {
        ++end;
        place.digits = takeCount(text, end);
        place.kind = Place::Kind::InputOnly;
    } else {
        return {};
    }
    place.digits = std::max(place.digits, 1u);
    place.position = position;
    place.length = end - position;
    return place;
}

Place findPlace(const std::string& text, std::size_t from) {
    for (std::size_t position = from; position < text.size(); ++position) {
        const Place place = placeAt(text, position);
        if (place.found()) return place;
    }
    return {};
}

[[noreturn]] void refusePattern(const std::string& path, const std::string& reason) {
    refuse(fmt::format("File pattern \"{}\" is not usable: {}", path, reason));
}

} // namespace

FilePattern FilePattern::parse(const std::string& path, Use use) {
    FilePattern pattern = singleFile(path);
    if (findPlace(pattern.m_directory, 0).found()) {
        refusePattern(path, "the frame number may only appear in the file name, not in a folder name.");
    }
    const std::string name = pattern.m_prefix;
    const Place place = findPlace(name, 0);
    if (!place.found()) return pattern;
    const std::string written = name.substr(place.position, place.length);
    const Place second = findPlace(name, place.position + place.length);
    if (second.found()) {
        refusePattern(path,
                      fmt::format("it has two placeholders for the frame number, \"{}\" and \"{}\"; keep only one.",
                                  written, name.substr(second.position, second.length)));
    }
    if (place.digits > maximumDigits) refusePattern(path, fmt::format("\"{}\" has too many digits.", written));
    if (place.kind == Place::Kind::BlankPadded) {
        refusePattern(path, fmt::format("\"{}\" pads with spaces; write \"%0{}d\".", written, place.digits));
    }
    if (place.kind == Place::Kind::InputOnly && use == Use::Output) {
        refusePattern(path, fmt::format("\"{}\" works for input only; write \"%0{}d\" for output.", written,
                                        std::max(place.digits, 1u)));
    }
    pattern.m_prefix = name.substr(0, place.position);
    pattern.m_suffix = name.substr(place.position + place.length);
    pattern.m_digits = place.digits;
    return pattern;
}

FilePattern FilePattern::singleFile(const std::string& path) {
    const std::size_t nameBegin = path.find_last_of('/') + 1; // npos + 1 is 0
    FilePattern pattern;
    pattern.m_directory = path.substr(0, nameBegin);
    pattern.m_prefix = path.substr(nameBegin);
    if (pattern.m_prefix.empty()) refusePattern(path, "the file name is missing.");
    pattern.m_folder = nameBegin > 1 ? path.substr(0, nameBegin - 1) : nameBegin == 1 ? "/" : ".";
    return pattern;
}

FilePattern FilePattern::sequence(const std::string& folder, const std::string& prefix, unsigned int digits,
                                  const std::string& suffix) {
    FilePattern pattern;
    pattern.m_folder = folder;
    pattern.m_directory = folder.empty() || folder.back() == '/' ? folder : folder + '/';
    pattern.m_prefix = prefix;
    pattern.m_suffix = suffix;
    pattern.m_digits = std::max(digits, 1u);
    return pattern;
}

std::string FilePattern::path(std::int32_t frame) const {
    if (!hasFrameNumber()) return m_directory + m_prefix;
    return fmt::format("{}{}{:0{}d}{}", m_directory, m_prefix, frame, m_digits, m_suffix);
}

std::optional<std::int32_t> FilePattern::frameNumber(const std::string& fileName) const {
    if (!hasFrameNumber() || fileName.size() <= m_prefix.size() + m_suffix.size() || !fileName.starts_with(m_prefix) ||
        !fileName.ends_with(m_suffix)) {
        return std::nullopt;
    }
    const std::string_view digits =
        std::string_view(fileName).substr(m_prefix.size(), fileName.size() - m_prefix.size() - m_suffix.size());
    std::int32_t number = 0;
    const char* const end = digits.data() + digits.size();
    const auto [after, error] = std::from_chars(digits.data(), end, number);
    if (error != std::errc() || after != end) return std::nullopt;
    if (number == 0 && digits.front() == '-') return std::nullopt; // 0 has no sign
    return number;
}

std::string FilePattern::string() const {
    if (!hasFrameNumber()) return m_directory + m_prefix;
    return m_directory + m_prefix + (m_digits > 1 ? fmt::format("%0{}d", m_digits) : std::string("%d")) + m_suffix;
}

} // namespace Tools
