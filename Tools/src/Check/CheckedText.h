#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "CorrectionFile/Parser/InvalidFormatException.h"

namespace Tools {

constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

/// A text from a file made fit for a message: no control characters, not too long.
std::string quoted(std::string_view text);

/// Without a byte order mark in front, and without spaces and tabs around it.
std::string_view trimmed(std::string_view text);

/// By the letters A to Z alone.
bool equalsIgnoringCase(std::string_view lhs, std::string_view rhs);

/// At least one piece; views of `text`.
std::vector<std::string_view> split(std::string_view text, char separator);

/// The reason within the detail lines of a format error.
std::string reasonOf(const CorrectionFile::InvalidFormatException& exception);

} // namespace Tools
