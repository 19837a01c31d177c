#pragma once

#include <string>
#include <string_view>

namespace Host {

/// A text that is safe to show on a terminal, which texts from files, and file names, could otherwise control. Control
/// characters become byte values, such as \x1B; line feeds and everything else are kept.
std::string printableText(std::string_view text);

} // namespace Host
