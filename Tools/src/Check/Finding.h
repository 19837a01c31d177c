#pragma once

#include <cstddef>
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

} // namespace Tools
