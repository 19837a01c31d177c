#include "CorrectionData/ContainerManager/ContainerManager.h"

#include <utility>

#include "Exception/Assert.h"
#include "Exception/DetailLines.h"

namespace CorrectionData {

namespace {

void checkThatFileBelongsToClip(const std::string& clipFileName, const std::string& correctionFilePath,
                                const Header& header) {
    if (namesClip(header, clipFileName)) return;
    throw FileMismatchException(clipFileName, correctionFilePath, header.videoFileName);
}

} // namespace

ContainerManager::ContainerManager(std::unique_ptr<ContainerManagerDataSource> dataSource, std::uint32_t capacity)
    : m_dataSource((ORVEX_ASSERT(dataSource), std::move(dataSource))), m_cache(capacity) {}

ContainerManager::~ContainerManager() = default;

void ContainerManager::shareContent(const std::string& clipFilePath, std::shared_ptr<Content>& content) {
    if (m_cache.cachedContentForClipFilePath(clipFilePath, content)) return;
    std::string correctionFilePath;
    auto loaded = std::make_shared<Content>();
    m_dataSource->content(clipFilePath, correctionFilePath, *loaded);
    m_cache.cacheContent(clipFilePath, correctionFilePath, loaded);
    content = std::move(loaded);
}

void ContainerManager::shareContent(const std::string& clipFileName, const std::string& correctionFilePath,
                                    std::shared_ptr<Content>& content) {
    std::shared_ptr<Content> cached;
    if (m_cache.cachedContentForCorrectionFilePath(correctionFilePath, cached)) {
        checkThatFileBelongsToClip(clipFileName, correctionFilePath, cached->header);
        content = std::move(cached);
        return;
    }
    auto loaded = std::make_shared<Content>();
    m_dataSource->content(correctionFilePath, *loaded);
    checkThatFileBelongsToClip(clipFileName, correctionFilePath, loaded->header);
    m_cache.cacheContent(correctionFilePath, loaded);
    content = std::move(loaded);
}

FileMismatchException::FileMismatchException(const std::string& clipFileName, const std::string& correctionFilePath,
                                             const std::string& clipFileNameInCorrectionFile)
    : Exception("Correction file does not belong to the clip.",
                DetailLines()
                    .text("Clip File Name", clipFileName)
                    .text("Correction File Path", correctionFilePath)
                    .text("Clip File Name in Correction File", clipFileNameInCorrectionFile)
                    .string()) {}

} // namespace CorrectionData
