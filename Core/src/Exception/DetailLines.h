#pragma once

#include <locale>
#include <sstream>
#include <string>

/// Composes the detail lines of an Exception: `Label: value`, one per line, the last without a line feed.
///
/// Numbers are written in the stream's default format (six significant digits), independent of the process's locale.
class DetailLines {
public:
    DetailLines() { m_stream.imbue(std::locale::classic()); }

    /// Appends `label: "value"`.
    DetailLines& text(const std::string& label, const std::string& value) {
        startLine(label) << '"' << value << '"';
        return *this;
    }

    /// Appends `label: value`.
    template <typename Number>
    DetailLines& number(const std::string& label, Number value) {
        startLine(label) << value;
        return *this;
    }

    std::string string() const { return m_stream.str(); }

private:
    std::ostream& startLine(const std::string& label) {
        if (m_hasLines) m_stream << '\n';
        m_hasLines = true;
        return m_stream << label << ": ";
    }

    std::ostringstream m_stream;
    bool m_hasLines = false;
};
