#include "Report/Dimensions.h"

#include <fmt/format.h>

#include <charconv>
#include <cmath>

#include "Report/Failure.h"

namespace Tools {
namespace {

template <typename Number>
bool takeNumber(const char*& begin, const char* end, Number& number) {
    const auto [after, error] = std::from_chars(begin, end, number);
    begin = after;
    return error == std::errc();
}

/// Reads "AxB" completely; false for everything else.
template <typename Number>
bool takePair(const std::string& text, Number& first, Number& second) {
    const char* position = text.data();
    const char* const end = text.data() + text.size();
    if (!takeNumber(position, end, first) || position == end || (*position != 'x' && *position != 'X')) return false;
    ++position;
    return takeNumber(position, end, second) && position == end;
}

} // namespace

double halfDiagonal(double width, double height) { return std::hypot(width, height) / 2.0; }

PixelSize parsePixelSize(const std::string& option, const std::string& text) {
    PixelSize size;
    const auto isUsable = [](std::uint32_t side) { return side >= 1 && side <= 65536; };
    if (!takePair(text, size.width, size.height) || !isUsable(size.width) || !isUsable(size.height)) {
        refuse(fmt::format("{} \"{}\" is not a size in pixels, such as 1920x1080.", option, text));
    }
    return size;
}

MillimetreSize parseMillimetreSize(const std::string& option, const std::string& text) {
    MillimetreSize size;
    const auto isUsable = [](float side) { return side > 0.0f && side <= 1000.0f; }; // false for NaN
    if (!takePair(text, size.width, size.height) || !isUsable(size.width) || !isUsable(size.height)) {
        refuse(fmt::format("{} \"{}\" is not a size in millimetres, such as 23.76x13.37.", option, text));
    }
    return size;
}

} // namespace Tools
