#pragma once

#include <algorithm>
#include <string>

#include "Text/lowerCase.h"

namespace Text {

/// Orders texts bytewise and case-insensitively; a proper prefix comes first.
///
/// Only A to Z are mapped to lower case, as by lowerCase.
struct iless {
    bool operator()(const std::string& lhs, const std::string& rhs) const {
        return std::lexicographical_compare(lhs.begin(), lhs.end(), rhs.begin(), rhs.end(), [](char left, char right) {
            return static_cast<unsigned char>(lowerCase(left)) < static_cast<unsigned char>(lowerCase(right));
        });
    }
};

} // namespace Text
