#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

#include "Check/Finding.h"

namespace Tools {

/// The result of checking one file.
struct CheckSummary {
    std::size_t defectCount = 0;
    std::size_t warningCount = 0;
    std::size_t frameCount = 0; ///< readable frame lines with different frame numbers
    std::uint32_t firstFrame = 0;
    std::uint32_t lastFrame = 0;
    int fileVersion = 0; ///< 0: unknown
};

/// Finds everything that is wrong in a correction file, whereas the parser stops at the first defect.
///
/// Every header and frame line is judged by the parser's own rule, and the header as a whole by the parser itself, so a
/// file has a defect exactly when the plug-in refuses it. Lines that a defect elsewhere would hide from the parser are
/// checked too. Warnings that hold for many frames are reported once, with the first line and the count.
/// Memory: the file's text and 16 bytes per frame.
class FileCheck {
public:
    using Report = std::function<void(const Finding&)>;

    /// Findings are reported while the file is read: the header's, then the body's in the order of lines, then those
    /// that need the whole file.
    explicit FileCheck(Report report);

    /// A file that cannot be read is a defect, too.
    CheckSummary check(const std::string& path);

    CheckSummary checkText(const std::string& text);

private:
    Report m_report;
};

} // namespace Tools
