#pragma once

#include <string>

#include "Exception/Exception.h"

namespace CorrectionFile {

/// A correction file could not be opened or read as a whole.
class NotReadableException : public Exception {
public:
    /// Details: `File Path: "/clips/A001.olcf"`.
    explicit NotReadableException(const std::string& filePath);
};

} // namespace CorrectionFile
