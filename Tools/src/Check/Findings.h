#pragma once

#include <cstddef>
#include <string>

#include "Check/FileCheck.h"

namespace Tools {

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
