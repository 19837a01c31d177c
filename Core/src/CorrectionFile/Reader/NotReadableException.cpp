#include "CorrectionFile/Reader/NotReadableException.h"

#include "Exception/DetailLines.h"

namespace CorrectionFile {

NotReadableException::NotReadableException(const std::string& filePath)
    : Exception("Correction file could not be read.", DetailLines().text("File Path", filePath).string()) {}

} // namespace CorrectionFile
