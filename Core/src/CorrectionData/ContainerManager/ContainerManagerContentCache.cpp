#include "CorrectionData/ContainerManager/ContainerManagerContentCache.h"

#include <iterator>
#include <utility>

namespace CorrectionData {

ContainerManagerContentCache::ContainerManagerContentCache(std::uint32_t capacity) : m_capacity(capacity) {}

void ContainerManagerContentCache::cacheContent(const std::string& correctionFilePath,
                                                std::shared_ptr<const Content> content) {
    m_contentByCorrectionFilePath[correctionFilePath] = std::move(content);
    m_insertions.push_back(correctionFilePath);
    removeAllDataRelatedToCorrectionFilePathsWithLowPriority();
}

void ContainerManagerContentCache::cacheContent(const std::string& clipFilePath, const std::string& correctionFilePath,
                                                std::shared_ptr<const Content> content) {
    m_correctionFilePathByClipFilePath[clipFilePath] = correctionFilePath;
    cacheContent(correctionFilePath, std::move(content));
}

bool ContainerManagerContentCache::cachedContentForCorrectionFilePath(const std::string& correctionFilePath,
                                                                      std::shared_ptr<const Content>& content) const {
    const auto found = m_contentByCorrectionFilePath.find(correctionFilePath);
    if (found == m_contentByCorrectionFilePath.end()) return false;
    content = found->second;
    return true;
}

bool ContainerManagerContentCache::cachedContentForClipFilePath(const std::string& clipFilePath,
                                                                std::shared_ptr<const Content>& content) const {
    const auto found = m_correctionFilePathByClipFilePath.find(clipFilePath);
    return found != m_correctionFilePathByClipFilePath.end() &&
           cachedContentForCorrectionFilePath(found->second, content);
}

void ContainerManagerContentCache::removeAllDataRelatedToCorrectionFilePath(const std::string& correctionFilePath) {
    m_contentByCorrectionFilePath.erase(correctionFilePath);
    auto& clips = m_correctionFilePathByClipFilePath;
    for (auto clip = clips.begin(); clip != clips.end();) {
        clip = clip->second == correctionFilePath ? clips.erase(clip) : std::next(clip);
    }
}

void ContainerManagerContentCache::removeAllDataRelatedToCorrectionFilePathsWithLowPriority() {
    if (m_capacity == 0) return;
    while (m_insertions.size() > m_capacity) {
        const std::string oldest = m_insertions.front();
        m_insertions.pop_front();
        removeAllDataRelatedToCorrectionFilePath(oldest);
    }
}

} // namespace CorrectionData
