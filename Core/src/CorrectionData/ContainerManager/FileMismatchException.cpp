#include "CorrectionData/ContainerManager/FileMismatchException.h"

#include "Exception/DetailLines.h"

namespace CorrectionData {

FileMismatchException::FileMismatchException(const std::string& clipFileName, const std::string& correctionFilePath,
                                             const std::string& clipFileNameInCorrectionFile)
    : Exception("Correction file does not belong to the clip.",
                DetailLines()
                    .text("Clip File Name", clipFileName)
                    .text("Correction File Path", correctionFilePath)
                    .text("Clip File Name in Correction File", clipFileNameInCorrectionFile)
                    .string()) {}

} // namespace CorrectionData
