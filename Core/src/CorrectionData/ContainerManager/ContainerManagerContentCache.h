#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <string>

#include "CorrectionData/Content.h"

namespace CorrectionData {

/// Caches the parsed content of correction files by the file's path and by the paths of clips.
///
/// Keeps at most `capacity` insertions, first in, first out; 0: no limit. Look-ups do not refresh an entry. Insertions
/// are counted, not files: a file that was cached twice is dropped as a whole when its older insertion expires.
/// Dropping content releases the cache's reference only. Threads: one at a time.
class ContainerManagerContentCache {
public:
    explicit ContainerManagerContentCache(std::uint32_t capacity);

    /// Both leave the cache unchanged when memory runs out.
    void cacheContent(const std::string& correctionFilePath, std::shared_ptr<Content> content);
    void cacheContent(const std::string& clipFilePath, const std::string& correctionFilePath,
                      std::shared_ptr<Content> content);

    /// Both return whether content was found, and set `content` only then.
    bool cachedContentForCorrectionFilePath(const std::string& correctionFilePath,
                                            std::shared_ptr<Content>& content) const;
    bool cachedContentForClipFilePath(const std::string& clipFilePath, std::shared_ptr<Content>& content) const;

    /// Removes the file's content and every clip that it was found for.
    void removeAllDataRelatedToCorrectionFilePath(const std::string& correctionFilePath);

    /// Removes the oldest insertions beyond the capacity.
    void removeAllDataRelatedToCorrectionFilePathsWithLowPriority();

private:
    void insert(const std::string& correctionFilePath, std::shared_ptr<Content> content,
                std::map<std::string, std::string> clips);

    std::uint32_t m_capacity;
    std::map<std::string, std::shared_ptr<Content>> m_contentByCorrectionFilePath;
    std::map<std::string, std::string> m_correctionFilePathByClipFilePath;
    std::deque<std::string> m_insertions; ///< correction file paths, oldest first; one may appear twice
};

} // namespace CorrectionData
