#pragma once

#include <exception>
#include <string>

/// Base of every failure that the correction core reports.
///
/// Carries two texts: a one-sentence brief text that fits a host's error line, and details of zero or more lines that
/// name the values involved. A detail line reads `Label: value`, string values in double quotes; the last line has no
/// line feed of its own. The core's facade is the only place that shows both texts to the outside.
class Exception : public std::exception {
public:
    explicit Exception(const std::string& what);
    Exception(const std::string& what, const std::string& details);
    ~Exception() override;

    /// The brief text; owned by the exception.
    const char* what() const noexcept override;

    /// The brief text and a line feed; if there are details, also the details and one more line feed.
    /// Example: "Correction file could not be read.\nFile Path: \"/a.olcf\"\n".
    std::string detailedDescription() const;

protected:
    /// For subclasses that compose their details in the constructor body.
    void setDetails(const std::string& details);

private:
    std::string m_what;
    std::string m_details;
};
