#pragma once

#include <string>
#include <string_view>

namespace Text {

/// The small letter of A to Z, any other character as it is, whatever the process's locale: what is compared with it
/// must not change when a host calls setlocale.
constexpr char lowerCase(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

/// The text in small letters, as above.
inline std::string lowerCase(std::string_view text) {
    std::string lower(text);
    for (char& c : lower) c = lowerCase(c);
    return lower;
}

} // namespace Text
