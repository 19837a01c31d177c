#include "Report/PrintableText.h"

#include <fmt/format.h>

namespace Tools {

std::string printableText(std::string_view text) {
    std::string printable;
    printable.reserve(text.size());
    const auto byteAt = [&](std::size_t i) {
        return i < text.size() ? static_cast<unsigned char>(text[i]) : static_cast<unsigned char>(0);
    };
    for (std::size_t i = 0; i < text.size(); ++i) {
        const unsigned char byte = byteAt(i);
        const unsigned char next = byteAt(i + 1);
        if (byte == 0xC2 && next >= 0x80 && next <= 0x9F) { // U+0080 … U+009F
            printable += fmt::format("\\x{:02X}\\x{:02X}", byte, next);
            ++i;
        } else if ((byte < 0x20 && byte != '\n') || byte == 0x7F) {
            printable += fmt::format("\\x{:02X}", byte);
        } else {
            printable += text[i];
        }
    }
    return printable;
}

std::string counted(std::size_t count, std::string_view noun) {
    return fmt::format("{} {}{}", count, noun, count == 1 ? "" : "s");
}

std::string withoutLastLineFeeds(std::string text) {
    while (!text.empty() && text.back() == '\n') text.pop_back();
    return text;
}

} // namespace Tools
