#pragma once

#include <string>
#include <string_view>

namespace Host {

/// A text as it may be shown on a terminal: texts from files and names of files could otherwise steer it. Control
/// characters stand as their bytes, such as \x1B; line feeds and everything else stay.
std::string printableText(std::string_view text);

} // namespace Host
