#pragma once

#include <string>

#include "CorrectionData/Content.h"

namespace CorrectionData {

/// Loads the content that the container manager has not cached. Outputs are set on success only.
class ContainerManagerDataSource {
public:
    virtual ~ContainerManagerDataSource() = default;

    /// Finds the correction file of a clip; returns its path and its parsed content.
    virtual void content(const std::string& clipFilePath, std::string& correctionFilePath, Content& content) = 0;

    /// Parses the given correction file.
    virtual void content(const std::string& correctionFilePath, Content& content) = 0;
};

} // namespace CorrectionData
