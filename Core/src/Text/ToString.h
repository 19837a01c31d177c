#pragma once

#include <locale>
#include <sstream>
#include <string>

namespace Text {

/// A number as streams write it by default in the classic locale, whatever the process's locale is: six significant
/// digits, a decimal point, no grouping. 25 gives "25", 23.976f "23.976", 1234567.0f "1.23457e+06". Any thread.
template <typename Number>
std::string toString(Number number) {
    std::ostringstream stream;
    stream.imbue(std::locale::classic());
    stream << number;
    return stream.str();
}

} // namespace Text
