#pragma once

#include <cstdint>
#include <string_view>

namespace Text {

/// Converts a whole text to a number with the rules of a strict lexical cast in the classic locale, whatever the
/// process's locale is: no blanks, no trailing characters, no overflow, not empty. Returns whether the text converted;
/// if not, the number is untouched. Thread-safe.
///
/// Integers are decimal digits after at most one sign. A "-" negates an unsigned number modulo its range:
/// "-1" gives 65535 for 16 bits. Leading zeros are allowed.
bool convertStrictly(std::string_view text, std::uint16_t& number);
bool convertStrictly(std::string_view text, std::uint32_t& number);
bool convertStrictly(std::string_view text, std::int32_t& number);

/// The decimal point is ".": "0.5", ".5", "1.", "+1", "1e-3"; also "nan", "nan(…)", "inf" and "infinity" in any case
/// and with a sign. A value beyond the largest float does not convert, one below the smallest gives zero.
bool convertStrictly(std::string_view text, float& number);

/// 0 or 1, possibly with a sign or leading zeros ("01", "+1", "-0", but not "-1").
bool convertStrictly(std::string_view text, bool& flag);

} // namespace Text
