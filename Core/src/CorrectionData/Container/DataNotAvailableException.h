#pragma once

#include <string>

#include "Exception/Exception.h"
#include "Timecode/Timecode.h"

namespace CorrectionData {

/// A clip's header or a frame's record is not available. A non-empty reason is appended to the brief text after a
/// space.
class DataNotAvailableException : public Exception {
public:
    /// For the header of a clip that is known by its path.
    DataNotAvailableException(const std::string& clipFilePath, const std::string& reason);
    /// For a frame's record of a clip that is known by its path.
    DataNotAvailableException(const std::string& clipFilePath, unsigned int frameNumber, const std::string& reason);
    DataNotAvailableException(const std::string& clipFilePath, const Timecode::Timecode& timecode,
                              const std::string& reason);

    /// For the header of a clip that is known by its name and its correction file.
    DataNotAvailableException(const std::string& clipFileName, const std::string& correctionFilePath,
                              const std::string& reason);
    /// For a frame's record of a clip that is known by its name and its correction file.
    DataNotAvailableException(const std::string& clipFileName, const std::string& correctionFilePath,
                              unsigned int frameNumber, const std::string& reason);
    DataNotAvailableException(const std::string& clipFileName, const std::string& correctionFilePath,
                              const Timecode::Timecode& timecode, const std::string& reason);

    /// For the record that a frame carries as JSON text.
    explicit DataNotAvailableException(const std::string& frameMetadataJSONString);
};

} // namespace CorrectionData
