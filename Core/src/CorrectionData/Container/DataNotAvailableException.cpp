#include "CorrectionData/Container/DataNotAvailableException.h"

#include "Exception/DetailLines.h"

namespace CorrectionData {

namespace {

constexpr const char* noHeader = "Header of the metadata is not available.";
constexpr const char* noFrame = "Metadata for the frame is not available.";

std::string brief(const char* text, const std::string& reason) {
    return reason.empty() ? std::string(text) : std::string(text) + " " + reason;
}

DetailLines clip(const std::string& clipFilePath) {
    DetailLines lines;
    lines.text("Clip File Path", clipFilePath);
    return lines;
}

DetailLines clip(const std::string& clipFileName, const std::string& correctionFilePath) {
    DetailLines lines;
    lines.text("Clip File Name", clipFileName).text("Correction File Path", correctionFilePath);
    return lines;
}

} // namespace

DataNotAvailableException::DataNotAvailableException(const std::string& clipFilePath, const std::string& reason)
    : Exception(brief(noHeader, reason), clip(clipFilePath).string()) {}

DataNotAvailableException::DataNotAvailableException(const std::string& clipFilePath, unsigned int frameNumber,
                                                     const std::string& reason)
    : Exception(brief(noFrame, reason), clip(clipFilePath).number("Frame Number", frameNumber).string()) {}

DataNotAvailableException::DataNotAvailableException(const std::string& clipFilePath,
                                                     const Timecode::Timecode& timecode, const std::string& reason)
    : Exception(brief(noFrame, reason), clip(clipFilePath).text("Timecode", timecode.string(false)).string()) {}

DataNotAvailableException::DataNotAvailableException(const std::string& clipFileName,
                                                     const std::string& correctionFilePath, const std::string& reason)
    : Exception(brief(noHeader, reason), clip(clipFileName, correctionFilePath).string()) {}

DataNotAvailableException::DataNotAvailableException(const std::string& clipFileName,
                                                     const std::string& correctionFilePath, unsigned int frameNumber,
                                                     const std::string& reason)
    : Exception(brief(noFrame, reason),
                clip(clipFileName, correctionFilePath).number("Frame Number", frameNumber).string()) {}

DataNotAvailableException::DataNotAvailableException(const std::string& clipFileName,
                                                     const std::string& correctionFilePath,
                                                     const Timecode::Timecode& timecode, const std::string& reason)
    : Exception(brief(noFrame, reason),
                clip(clipFileName, correctionFilePath).text("Timecode", timecode.string(false)).string()) {}

DataNotAvailableException::DataNotAvailableException(const std::string& frameMetadataJSONString)
    : Exception(noFrame, DetailLines().text("JSON String", frameMetadataJSONString).string()) {}

} // namespace CorrectionData
