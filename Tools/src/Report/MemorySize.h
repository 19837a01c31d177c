#pragma once

#include <cstdint>
#include <string>

namespace Tools {

/// Bytes in a text such as "8G", "512M", "1.5 GiB", "65536" or "64k"; units are powers of 1024, letter case is free.
/// Throws Failure (WrongUse) naming the text: not a number, an unknown unit, 0, or too large for 63 bits.
std::uint64_t parseMemorySize(const std::string& text);

/// Text for people: "1.5 GiB", "512 MiB", "100 bytes".
std::string memorySizeText(std::uint64_t bytes);

} // namespace Tools
