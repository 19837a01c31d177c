#include "CorrectionData/ContainerManager/ContainerManagerContentCache.h"

#include <iterator>
#include <utility>

namespace CorrectionData {

ContainerManagerContentCache::ContainerManagerContentCache(std::uint32_t capacity) : m_capacity(capacity) {}

void ContainerManagerContentCache::cacheContent(const std::string& correctionFilePath,
                                                std::shared_ptr<Content> content) {
    insert(correctionFilePath, std::move(content), {});
}

void ContainerManagerContentCache::cacheContent(const std::string& clipFilePath, const std::string& correctionFilePath,
                                                std::shared_ptr<Content> content) {
    insert(correctionFilePath, std::move(content), {{clipFilePath, correctionFilePath}});
}

void ContainerManagerContentCache::insert(const std::string& correctionFilePath, std::shared_ptr<Content> content,
                                          std::map<std::string, std::string> clips) {
    // What needs memory comes first. An entry without its place in the queue would never be dropped.
    std::map<std::string, std::shared_ptr<Content>> contents{{correctionFilePath, std::move(content)}};
    m_insertions.push_back(correctionFilePath);
    // The new entries win, the old ones join them.
    contents.merge(m_contentByCorrectionFilePath);
    contents.swap(m_contentByCorrectionFilePath);
    clips.merge(m_correctionFilePathByClipFilePath);
    clips.swap(m_correctionFilePathByClipFilePath);
    removeAllDataRelatedToCorrectionFilePathsWithLowPriority();
}

bool ContainerManagerContentCache::cachedContentForCorrectionFilePath(const std::string& correctionFilePath,
                                                                      std::shared_ptr<Content>& content) const {
    const auto found = m_contentByCorrectionFilePath.find(correctionFilePath);
    if (found == m_contentByCorrectionFilePath.end()) return false;
    content = found->second;
    return true;
}

bool ContainerManagerContentCache::cachedContentForClipFilePath(const std::string& clipFilePath,
                                                                std::shared_ptr<Content>& content) const {
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
        const std::string oldest = std::move(m_insertions.front());
        m_insertions.pop_front();
        removeAllDataRelatedToCorrectionFilePath(oldest);
    }
}

} // namespace CorrectionData
