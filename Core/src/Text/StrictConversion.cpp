#include "Text/StrictConversion.h"

#include <boost/lexical_cast/try_lexical_convert.hpp>
#include <charconv>
#include <cmath>
#include <limits>
#include <locale>
#include <sstream>
#include <string>

namespace Text {

namespace {

// The lexical cast itself honours the digit grouping of the process's locale, so it cannot be used for integers.
template <typename Unsigned>
bool convertUnsigned(std::string_view text, Unsigned& number) {
    const bool isNegative = !text.empty() && text.front() == '-';
    if (isNegative || (!text.empty() && text.front() == '+')) text.remove_prefix(1);
    Unsigned magnitude = 0;
    const char* const end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, magnitude);
    if (error != std::errc() || rest != end) return false;
    number = isNegative ? static_cast<Unsigned>(0u - magnitude) : magnitude;
    return true;
}

// What a lexical cast does, but in the classic locale.
bool convertFloatByStream(std::string_view text, float& number) {
    std::istringstream stream{std::string(text)};
    stream.imbue(std::locale::classic());
    stream.unsetf(std::ios::skipws);
    float value = 0.0f;
    if (!(stream >> value) || stream.get() != std::istringstream::traits_type::eof()) return false;
    if (std::string_view("eE+-").find(text.back()) != std::string_view::npos) return false;
    number = value;
    return true;
}

} // namespace

bool convertStrictly(std::string_view text, std::uint16_t& number) { return convertUnsigned(text, number); }

bool convertStrictly(std::string_view text, std::uint32_t& number) { return convertUnsigned(text, number); }

bool convertStrictly(std::string_view text, std::int32_t& number) {
    if (!text.empty() && text.front() == '+') {
        text.remove_prefix(1);
        if (!text.empty() && text.front() == '-') return false;
    }
    std::int32_t value = 0;
    const char* const end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, value);
    if (error != std::errc() || rest != end) return false;
    number = value;
    return true;
}

bool convertStrictly(std::string_view text, float& number) {
    if (text.empty()) return false;
    // Nearly every number of a correction file ends here; both ways round to the nearest float.
    float value = 0.0f;
    const char* const end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, value);
    if (error == std::errc() && rest == end && std::isfinite(value)) {
        number = value;
        return true;
    }
    // Only the words for not-a-number and infinity hold this letter; their spelling depends on no locale.
    if (text.find_first_of("nN") != std::string_view::npos) {
        if (!boost::conversion::try_lexical_convert(text.data(), text.size(), value)) return false;
        number = value;
        return true;
    }
    return convertFloatByStream(text, number);
}

bool convertStrictly(std::string_view text, bool& flag) {
    bool value = false;
    if (!boost::conversion::try_lexical_convert(text.data(), text.size(), value)) return false;
    flag = value;
    return true;
}

} // namespace Text
