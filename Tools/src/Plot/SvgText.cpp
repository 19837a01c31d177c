#include "Plot/SvgText.h"

#include <cstddef>

namespace Tools {

namespace {

constexpr std::string_view replacement = "\xEF\xBF\xBD";

// Length of the well-formed UTF-8 sequence that the text begins with; 0 if there is none.
std::size_t sequenceLength(std::string_view text) {
    const auto byte = [&](std::size_t i) { return i < text.size() ? static_cast<unsigned char>(text[i]) : 0u; };
    const auto follows = [&](std::size_t i) { return (byte(i) & 0xC0u) == 0x80u; };
    const unsigned int first = byte(0);
    if (first < 0x80) return 1;
    if (first >= 0xC2 && first <= 0xDF) return follows(1) ? 2 : 0;
    if (first >= 0xE0 && first <= 0xEF) {
        const bool isValid =
            follows(1) && follows(2) && !(first == 0xE0 && byte(1) < 0xA0) && !(first == 0xED && byte(1) > 0x9F);
        return isValid ? 3 : 0;
    }
    if (first >= 0xF0 && first <= 0xF4) {
        const bool isValid = follows(1) && follows(2) && follows(3) && !(first == 0xF0 && byte(1) < 0x90) &&
                             !(first == 0xF4 && byte(1) > 0x8F);
        return isValid ? 4 : 0;
    }
    return 0;
}

} // namespace

std::string markupText(std::string_view text) {
    std::string markup;
    while (!text.empty()) {
        const std::size_t length = sequenceLength(text);
        const char c = text.front();
        if (length == 0 || (length == 1 && static_cast<unsigned char>(c) < 0x20) || c == 0x7F) {
            markup += replacement;
        } else if (c == '&') {
            markup += "&amp;";
        } else if (c == '<') {
            markup += "&lt;";
        } else if (c == '>') {
            markup += "&gt;";
        } else if (c == '"') {
            markup += "&quot;";
        } else {
            markup += text.substr(0, length);
        }
        text.remove_prefix(length == 0 ? 1 : length);
    }
    return markup;
}

const char* const figureStyle =
    R"(:root{--paper:#fff;--card:#fff;--ink:#1b1f24;--soft:#57606a;--rule:#d8dee4;--edge:#d0d7de;
--s0:#0067a8;--s1:#b34700;--s2:#00725a;--s3:#9a3f86}
@media (prefers-color-scheme:dark){:root{--paper:#0f1318;--card:#171c22;--ink:#e6edf3;--soft:#9da7b1;--rule:#2c343d;--edge:#30363d;
--s0:#6cb6ff;--s1:#f5a04c;--s2:#4fd1ab;--s3:#e39bd3}}
.figure text{font:12px system-ui,"DejaVu Sans",sans-serif;fill:var(--ink)}
.figure .title{font-size:14px;font-weight:600}
.figure .soft{fill:var(--soft)}
.figure .rule{stroke:var(--rule);stroke-width:1;fill:none}
.figure .axis{stroke:var(--soft);stroke-width:1;fill:none}
.figure .mark{stroke:var(--soft);stroke-width:1;stroke-dasharray:2 3;fill:none}
.figure .line{stroke-width:1.8;fill:none;stroke-linejoin:round}
.figure .thin{stroke-width:1.1;fill:none}
.figure .s0{stroke:var(--s0)}.figure .s1{stroke:var(--s1);stroke-dasharray:8 3}
.figure .s2{stroke:var(--s2);stroke-dasharray:3 3}.figure .s3{stroke:var(--s3);stroke-dasharray:9 3 2 3}
.figure .dot{fill:var(--card);stroke-width:1.6;stroke-dasharray:none}
.figure text.t0{fill:var(--s0)}.figure text.t1{fill:var(--s1)}.figure text.t2{fill:var(--s2)}.figure text.t3{fill:var(--s3)}
)";

} // namespace Tools
