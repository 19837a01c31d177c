#include "Farm/ShellText.h"

namespace Tools {

std::string shellQuoted(const std::string& text) {
    std::string result = "'";
    for (const char character : text) {
        if (character == '\'') {
            result += "'\\''";
        } else {
            result += character;
        }
    }
    return result + "'";
}

std::string shellQuoted(const std::vector<std::string>& texts) {
    std::string result;
    for (const std::string& text : texts) result += (result.empty() ? "" : " ") + shellQuoted(text);
    return result;
}

} // namespace Tools
