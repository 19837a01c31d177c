#pragma once

#include <string>

#include "Text/ToString.h"

/// Composes the detail lines of an Exception: `Label: value`, one per line, the last without a line feed.
///
/// Numbers are written in the stream's default format (six significant digits), independent of the process's locale.
class DetailLines {
public:
    /// Appends `label: "value"`.
    DetailLines& text(const std::string& label, const std::string& value) { return line(label, '"' + value + '"'); }

    /// Appends `label: value`.
    template <typename Number>
    DetailLines& number(const std::string& label, Number value) {
        return line(label, Text::toString(value));
    }

    std::string string() const { return m_lines; }

private:
    DetailLines& line(const std::string& label, const std::string& value) {
        if (!m_lines.empty()) m_lines += '\n';
        m_lines += label + ": " + value;
        return *this;
    }

    std::string m_lines;
};
