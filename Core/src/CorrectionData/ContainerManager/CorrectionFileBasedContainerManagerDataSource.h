#pragma once

#include <string>

#include "CorrectionData/ContainerManager/ContainerManagerDataSource.h"
#include "CorrectionFile/Finder/LevelOfDepth.h"

namespace CorrectionData {

/// Loads content from correction files on disk.
///
/// Throws what the finder, the reader and the parser throw; a value in a file that is not a number throws
/// boost::bad_lexical_cast, an unreadable folder boost::filesystem::filesystem_error.
class CorrectionFileBasedContainerManagerDataSource : public ContainerManagerDataSource {
public:
    /// `levelOfDepth`: how far below and above a clip's folder to search.
    explicit CorrectionFileBasedContainerManagerDataSource(CorrectionFile::LevelOfDepth levelOfDepth);
    ~CorrectionFileBasedContainerManagerDataSource() override;

    void content(const std::string& clipFilePath, std::string& correctionFilePath, Content& content) override;
    void content(const std::string& correctionFilePath, Content& content) override;

private:
    CorrectionFile::LevelOfDepth m_levelOfDepth;
};

} // namespace CorrectionData
