#pragma once

#include <algorithm>
#include <string>

namespace Text {

/// Orders texts without regard to the case of their letters, then bytewise; a proper prefix comes first.
///
/// Only A to Z are mapped, whatever the process's locale: a map that is ordered by it must not change its order when a
/// host calls setlocale.
struct iless {
    bool operator()(const std::string& lhs, const std::string& rhs) const {
        return std::lexicographical_compare(lhs.begin(), lhs.end(), rhs.begin(), rhs.end(), [](char left, char right) {
            return static_cast<unsigned char>(lower(left)) < static_cast<unsigned char>(lower(right));
        });
    }

private:
    static constexpr char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }
};

} // namespace Text
