#pragma once

#include <stdexcept>
#include <string>

namespace Tools {

/// Why something that was asked for cannot be done: what is wrong, what to do next, and what kind of trouble it is.
class Failure : public std::runtime_error {
public:
    enum class Kind {
        WrongUse,    ///< options, ranges, patterns or input files are not usable
        Environment, ///< no OpenCL device, or its kernel cache cannot be used
        Output,      ///< output could not be written
        Correction,  ///< the nodes cannot correct this frame; others may be all right
    };

    /// `brief` is what() and stands alone. `details` name all values involved, in lines that begin with the brief text;
    /// without them, the brief text says everything.
    Failure(Kind kind, const std::string& brief, const std::string& details = {});
    ~Failure() override;

    Kind kind() const noexcept { return m_kind; }
    const std::string& details() const noexcept { return m_details; }

    /// The whole text for a user, without a line feed at its end: the details, or else the brief text; the cause first.
    std::string text() const;

private:
    Kind m_kind;
    std::string m_details;
};

/// Throws the failure of something that was not used as it is meant (Failure::Kind::WrongUse).
[[noreturn]] void refuse(const std::string& what);

/// A text of the core without the sentence that only says that there are no lens data, where the cause follows it.
std::string causeFirst(const std::string& text);

} // namespace Tools
