#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace Tools {

/// A text that is safe to show on a terminal, which texts from files, and file names, could otherwise control. Control
/// characters become byte values, such as \x1B; line feeds and everything else are kept.
std::string printableText(std::string_view text);

/// "1 frame", "2 frames".
std::string counted(std::size_t count, std::string_view noun);

/// The text without the line feeds at its end.
std::string withoutLastLineFeeds(std::string text);

} // namespace Tools
