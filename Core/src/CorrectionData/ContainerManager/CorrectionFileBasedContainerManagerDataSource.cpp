#include "CorrectionData/ContainerManager/CorrectionFileBasedContainerManagerDataSource.h"

#include <utility>

#include "CorrectionFile/Finder/ClipFilePathBasedFinder.h"
#include "CorrectionFile/Parser/Parser.h"
#include "CorrectionFile/Reader/Reader.h"

namespace CorrectionData {

CorrectionFileBasedContainerManagerDataSource::CorrectionFileBasedContainerManagerDataSource(
    CorrectionFile::LevelOfDepth levelOfDepth)
    : m_levelOfDepth(levelOfDepth) {}

CorrectionFileBasedContainerManagerDataSource::~CorrectionFileBasedContainerManagerDataSource() = default;

void CorrectionFileBasedContainerManagerDataSource::content(const std::string& clipFilePath,
                                                            std::string& correctionFilePath, Content& content) {
    std::string found;
    CorrectionFile::ClipFilePathBasedFinder(clipFilePath, m_levelOfDepth).find(found);
    this->content(found, content);
    correctionFilePath = std::move(found);
}

void CorrectionFileBasedContainerManagerDataSource::content(const std::string& correctionFilePath, Content& content) {
    std::string text;
    CorrectionFile::Reader().readFile(correctionFilePath, text);
    CorrectionFile::Parser().parse(text, content);
}

} // namespace CorrectionData
