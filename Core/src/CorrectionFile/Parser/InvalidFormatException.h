#pragma once

#include <cstddef>
#include <string>

#include "Exception/Exception.h"

namespace CorrectionFile {

/// A correction file's text does not follow the format.
class InvalidFormatException : public Exception {
public:
    /// For the file as a whole. Details: `Reason: Body start could not be found.`
    explicit InvalidFormatException(const std::string& reason);

    /// For one line, counted from 1. Details: `Line Number: 3` and `Line Content: "abc"`.
    InvalidFormatException(std::size_t lineNumber, const std::string& lineContent);
};

} // namespace CorrectionFile
