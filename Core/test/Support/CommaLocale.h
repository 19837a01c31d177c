#pragma once

#include <locale>

namespace Support {

/// While it lives, the process's global locale writes and reads numbers as many European ones do: "1.234,5".
/// Needs no locale installed.
class CommaLocale {
public:
    CommaLocale() : m_previous(std::locale::global(std::locale(std::locale::classic(), new Punctuation))) {}
    ~CommaLocale() { std::locale::global(m_previous); }
    CommaLocale(const CommaLocale&) = delete;
    CommaLocale& operator=(const CommaLocale&) = delete;

private:
    struct Punctuation : std::numpunct<char> {
        char do_decimal_point() const override { return ','; }
        char do_thousands_sep() const override { return '.'; }
        std::string do_grouping() const override { return "\3"; }
    };

    std::locale m_previous;
};

} // namespace Support
