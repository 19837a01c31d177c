// A check reads the text twice, as the parser does: once for the header, once for the version and the frames.
//
// Whether something is a defect is decided by the parser's functions; the code here only finds the words for it. Where
// the parser would have stopped, the check goes on with the likeliest reading: with the values that a broken header
// does give, and with the version that a frame line fits. What it finds from there on can only add to the defects.

#include "Check/FileCheck.h"

#include <string_view>
#include <utility>

#include "Check/BodyCheck.h"
#include "Check/Findings.h"
#include "Check/HeaderCheck.h"
#include "CorrectionFile/Reader/Reader.h"

namespace Tools {

namespace {

void checkEncoding(std::string_view text, Findings& findings) {
    if (text.starts_with(byteOrderMark)) {
        findings.warning(1, "byte-order-mark",
                         "the file begins with a UTF-8 byte order mark, which hides line 1; save it without one");
    } else if (text.starts_with("\xFF\xFE") || text.starts_with("\xFE\xFF")) {
        findings.warning(1, "byte-order-mark",
                         "the file is UTF-16 text; save it as plain ASCII or UTF-8 without byte order mark");
    }
}

} // namespace

FileCheck::FileCheck(Report report) : m_report(std::move(report)) {}

CheckSummary FileCheck::check(const std::string& path) {
    std::string text;
    try {
        CorrectionFile::Reader().readFile(path, text);
    } catch (const CorrectionFile::NotReadableException& exception) {
        m_report({Finding::Severity::Defect, 0, "unreadable", exception.what()});
        CheckSummary summary;
        summary.defectCount = 1;
        return summary;
    }
    return checkText(text);
}

CheckSummary FileCheck::checkText(const std::string& text) {
    CheckSummary summary;
    Findings findings(m_report, summary);
    checkEncoding(text, findings);
    const HeaderCheck header(text, findings);
    const BodyCheck body(text, header, findings, summary);
    return summary;
}

} // namespace Tools
