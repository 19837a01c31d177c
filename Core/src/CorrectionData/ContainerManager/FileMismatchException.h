#pragma once

#include <string>

#include "Exception/Exception.h"

namespace CorrectionData {

/// The correction file that was named for a clip was made for another one.
class FileMismatchException : public Exception {
public:
    FileMismatchException(const std::string& clipFileName, const std::string& correctionFilePath,
                          const std::string& clipFileNameInCorrectionFile);
};

} // namespace CorrectionData
