#pragma once

#include <string>
#include <string_view>

namespace Text {

/// The lower-case letter for A to Z, any other character unchanged. Independent of the process's locale: comparisons
/// must not change when a host calls setlocale.
constexpr char lowerCase(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

/// The text in lower case, likewise.
inline std::string lowerCase(std::string_view text) {
    std::string lower(text);
    for (char& c : lower) c = lowerCase(c);
    return lower;
}

} // namespace Text
