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

namespace {

[[noreturn]] void refuseSize(const std::string& text, const char* reason) {
    refuse(fmt::format("Memory size \"{}\" is not understood: {} Examples: 8G, 512M, 1.5G.", text, reason));
}

} // namespace

std::uint64_t parseMemorySize(const std::string& text) {
    double amount = 0.0;
    const char* const end = text.data() + text.size();
    // Without an exponent: "1e3" would be a strange way to say it, and "E" a strange unit.
    auto [rest, error] = std::from_chars(text.data(), end, amount, std::chars_format::fixed);
    if (error != std::errc() || !std::isfinite(amount)) refuseSize(text, "it does not begin with a number.");
    while (rest != end && *rest == ' ') ++rest;
    std::string unit(rest, end);
    for (char& character : unit) {
        if (character >= 'a' && character <= 'z') character = static_cast<char>(character - 'a' + 'A');
    }
    if (unit.size() > 1 && unit.ends_with("IB")) {
        unit.resize(unit.size() - 2);
    } else if (unit.size() > 1 && unit.ends_with("B")) {
        unit.resize(unit.size() - 1);
    }
    static const std::string units = "KMGT";
    int power = 0;
    if (unit.size() == 1 && units.find(unit) != std::string::npos) {
        power = static_cast<int>(units.find(unit)) + 1;
    } else if (!unit.empty() && unit != "B") {
        refuseSize(text, "its unit is not K, M, G or T.");
    }
    const double bytes = std::ldexp(amount, 10 * power);
    if (!(bytes >= 1.0)) refuseSize(text, "it must be more than 0.");
    if (bytes >= std::ldexp(1.0, 63)) refuseSize(text, "it is too large.");
    return static_cast<std::uint64_t>(bytes);
}

std::string memorySizeText(std::uint64_t bytes) {
    static constexpr const char* units[] = {"KiB", "MiB", "GiB", "TiB"};
    if (bytes < 1024) return fmt::format("{} bytes", bytes);
    double amount = static_cast<double>(bytes) / 1024.0;
    std::size_t unit = 0;
    while (amount >= 1024.0 && unit + 1 < std::size(units)) {
        amount /= 1024.0;
        ++unit;
    }
    return fmt::format("{:.3g} {}", amount, units[unit]);
}

} // namespace Tools
