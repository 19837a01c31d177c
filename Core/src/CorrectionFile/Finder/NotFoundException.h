#pragma once

#include <string>
#include <vector>

#include "Exception/Exception.h"

namespace CorrectionFile {

/// No correction file of a clip was found in any of the folders that were searched.
class NotFoundException : public Exception {
public:
    /// Details; every line ends in a line feed, including the last:
    ///
    ///     Clip File Path: "/clips/A001.mov"
    ///     Searched Directory Paths:
    ///     →"/clips"                          after a tab, one line per folder in search order
    NotFoundException(const std::string& clipFilePath, const std::vector<std::string>& searchedDirectoryPaths);

    /// In search order.
    const std::vector<std::string>& searchedDirectoryPaths() const;

private:
    std::vector<std::string> m_searchedDirectoryPaths;
};

} // namespace CorrectionFile
