#pragma once

#include <string>
#include <string_view>

namespace Tools {

/// A text from a file made safe for HTML and SVG: markup escaped, control characters and invalid UTF-8 replaced by
/// U+FFFD.
std::string markupText(std::string_view text);

/// Colours, fonts and line styles that all figures use, light or dark as the reader's system is set. The series'
/// colours are told apart by colour-blind readers, and each has a dash pattern of its own.
extern const char* const figureStyle;

} // namespace Tools
