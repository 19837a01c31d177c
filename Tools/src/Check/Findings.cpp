#include "Check/Findings.h"

#include <algorithm>

#include "Report/PrintableText.h"
#include "Text/lowerCase.h"

namespace Tools {

std::string quoted(std::string_view text) {
    constexpr std::size_t longest = 60;
    return "\"" + printableText(text.substr(0, longest)) + (text.size() > longest ? "…\"" : "\"");
}

std::string_view trimmed(std::string_view text) {
    if (text.starts_with(byteOrderMark)) text.remove_prefix(byteOrderMark.size());
    while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) text.remove_prefix(1);
    while (!text.empty() && (text.back() == ' ' || text.back() == '\t')) text.remove_suffix(1);
    return text;
}

bool equalsIgnoringCase(std::string_view lhs, std::string_view rhs) {
    return std::equal(lhs.begin(), lhs.end(), rhs.begin(), rhs.end(),
                      [&](char left, char right) { return Text::lowerCase(left) == Text::lowerCase(right); });
}

std::vector<std::string_view> split(std::string_view text, char separator) {
    std::vector<std::string_view> pieces;
    for (;;) {
        const std::size_t end = text.find(separator);
        pieces.push_back(text.substr(0, end));
        if (end == std::string_view::npos) return pieces;
        text.remove_prefix(end + 1);
    }
}

std::string reasonOf(const CorrectionFile::InvalidFormatException& exception) {
    std::string details = exception.detailedDescription();
    details.erase(0, details.find('\n') + 1);
    if (!details.empty() && details.back() == '\n') details.pop_back();
    constexpr std::string_view label = "Reason: ";
    if (details.starts_with(label)) details.erase(0, label.size());
    return details;
}

} // namespace Tools
