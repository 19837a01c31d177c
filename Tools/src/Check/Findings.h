#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "Check/FileCheck.h"
#include "CorrectionFile/Parser/InvalidFormatException.h"

namespace Tools {

constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

/// A text from a file made fit for a message: no control characters, not too long.
std::string quoted(std::string_view text);

/// Without a byte order mark in front, and without spaces and tabs around it.
std::string_view trimmed(std::string_view text);

/// By the letters A to Z alone.
bool equalsIgnoringCase(std::string_view lhs, std::string_view rhs);

/// At least one piece; views of `text`.
std::vector<std::string_view> split(std::string_view text, char separator);

/// The reason within the detail lines of a format error.
std::string reasonOf(const CorrectionFile::InvalidFormatException& exception);

/// Hands findings on and counts them.
class Findings {
public:
    /// Both must outlive this.
    Findings(const FileCheck::Report& report, CheckSummary& summary) : m_report(report), m_summary(summary) {}

    void defect(std::size_t lineNumber, const char* kind, const std::string& message) {
        ++m_summary.defectCount;
        m_report({Finding::Severity::Defect, lineNumber, kind, message});
    }

    void warning(std::size_t lineNumber, const std::string& kind, const std::string& message) {
        ++m_summary.warningCount;
        m_report({Finding::Severity::Warning, lineNumber, kind, message});
    }

    std::size_t defectCount() const { return m_summary.defectCount; }

private:
    const FileCheck::Report& m_report;
    CheckSummary& m_summary;
};

} // namespace Tools
