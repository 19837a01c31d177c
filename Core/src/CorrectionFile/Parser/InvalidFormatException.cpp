#include "CorrectionFile/Parser/InvalidFormatException.h"

#include "Exception/DetailLines.h"

namespace CorrectionFile {

namespace {

constexpr const char* briefDescription = "Correction file could not be parsed due to an invalid format.";

} // namespace

// The reason is the one text of the exception family that stands without quotes.
InvalidFormatException::InvalidFormatException(const std::string& reason)
    : Exception(briefDescription, "Reason: " + reason) {}

InvalidFormatException::InvalidFormatException(std::size_t lineNumber, const std::string& lineContent)
    : Exception(briefDescription,
                DetailLines().number("Line Number", lineNumber).text("Line Content", lineContent).string()) {}

} // namespace CorrectionFile
