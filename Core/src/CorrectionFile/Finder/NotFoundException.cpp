#include "CorrectionFile/Finder/NotFoundException.h"

#include "Exception/DetailLines.h"

namespace CorrectionFile {

NotFoundException::NotFoundException(const std::string& clipFilePath,
                                     const std::vector<std::string>& searchedDirectoryPaths)
    : Exception("Correction file could not be found."), m_searchedDirectoryPaths(searchedDirectoryPaths) {
    std::string details = DetailLines().text("Clip File Path", clipFilePath).string() + "\n";
    details += "Searched Directory Paths:\n";
    for (const std::string& path : searchedDirectoryPaths) details += "\t\"" + path + "\"\n";
    setDetails(details);
}

const std::vector<std::string>& NotFoundException::searchedDirectoryPaths() const { return m_searchedDirectoryPaths; }

} // namespace CorrectionFile
