#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

namespace Tools {

/// One thing that is wrong, or odd, in a correction file.
struct Finding {
    enum class Severity {
        Defect,  ///< the plug-in refuses the file because of it
        Warning, ///< the plug-in accepts the file; the result may not be what was meant
    };

    Severity severity = Severity::Defect;
    std::size_t lineNumber = 0; ///< counted from 1; 0: the file as a whole
    std::string kind;           ///< a short fixed word for programs, such as "frame-line"
    std::string message;        ///< a sentence for people, without the file's name and the line number
};

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
/// Memory: the file's text and 12 bytes per frame.
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
