#include "CorrectionData/ContainerManager/ContainerManagerContentCache.h"

#include <gtest/gtest.h>

using CorrectionData::ContainerManagerContentCache;
using CorrectionData::Content;

namespace {

class ContentCacheTest : public testing::Test {
protected:
    ContainerManagerContentCache m_cache{2};

    static std::shared_ptr<Content> content() { return std::make_shared<Content>(); }

    bool hasFile(const std::string& path) const {
        std::shared_ptr<Content> found;
        return m_cache.cachedContentForCorrectionFilePath(path, found);
    }
    bool hasClip(const std::string& path) const {
        std::shared_ptr<Content> found;
        return m_cache.cachedContentForClipFilePath(path, found);
    }
};

} // namespace

TEST_F(ContentCacheTest, FindsContentByItsFilesPath) {
    const auto cached = content();
    m_cache.cacheContent("F1", cached);
    std::shared_ptr<Content> found;
    ASSERT_TRUE(m_cache.cachedContentForCorrectionFilePath("F1", found));
    EXPECT_EQ(found, cached);
}

TEST_F(ContentCacheTest, FindsContentByTheClipsPathAndByItsFiles) {
    const auto cached = content();
    m_cache.cacheContent("C1", "F1", cached);
    std::shared_ptr<Content> found;
    ASSERT_TRUE(m_cache.cachedContentForClipFilePath("C1", found));
    EXPECT_EQ(found, cached);
    EXPECT_TRUE(hasFile("F1"));
}

TEST_F(ContentCacheTest, LeavesTheOutputUntouchedWhenNothingIsFound) {
    const auto kept = content();
    std::shared_ptr<Content> found = kept;
    EXPECT_FALSE(m_cache.cachedContentForCorrectionFilePath("F1", found));
    EXPECT_FALSE(m_cache.cachedContentForClipFilePath("C1", found));
    EXPECT_EQ(found, kept);
}

TEST_F(ContentCacheTest, DropsTheOldestInsertionBeyondItsCapacity) {
    for (const char* file : {"F1", "F2", "F3"}) m_cache.cacheContent(file, content());
    EXPECT_FALSE(hasFile("F1"));
    EXPECT_TRUE(hasFile("F2"));
    EXPECT_TRUE(hasFile("F3"));
}

TEST_F(ContentCacheTest, DropsAFileCachedTwiceWhenItsOlderInsertionComesDue) {
    for (const char* file : {"F1", "F2", "F1"}) m_cache.cacheContent(file, content());
    EXPECT_FALSE(hasFile("F1"));
    EXPECT_TRUE(hasFile("F2"));
}

TEST_F(ContentCacheTest, DoesNotRefreshAFileThatIsLookedUp) {
    for (const char* file : {"F1", "F2"}) m_cache.cacheContent(file, content());
    EXPECT_TRUE(hasFile("F1"));
    m_cache.cacheContent("F3", content());
    EXPECT_FALSE(hasFile("F1"));
}

TEST_F(ContentCacheTest, KeepsEverythingWithACapacityOfZero) {
    m_cache = ContainerManagerContentCache(0);
    for (int i = 0; i < 300; ++i) m_cache.cacheContent("F" + std::to_string(i), content());
    for (int i = 0; i < 300; ++i) EXPECT_TRUE(hasFile("F" + std::to_string(i)));
}

TEST_F(ContentCacheTest, ForgetsEveryClipOfARemovedFile) {
    m_cache = ContainerManagerContentCache(0);
    m_cache.cacheContent("C1", "F1", content());
    m_cache.cacheContent("C2", "F1", content());
    m_cache.cacheContent("C3", "F2", content());
    m_cache.removeAllDataRelatedToCorrectionFilePath("F1");
    EXPECT_FALSE(hasClip("C1"));
    EXPECT_FALSE(hasClip("C2"));
    EXPECT_TRUE(hasClip("C3"));
    m_cache.cacheContent("F1", content());
    EXPECT_FALSE(hasClip("C1")) << "the way from the clip to the file is forgotten, not only the content";
}

TEST_F(ContentCacheTest, ForgetsTheClipsOfADroppedFile) {
    m_cache.cacheContent("C1", "F1", content());
    m_cache.cacheContent("F2", content());
    m_cache.cacheContent("F3", content());
    EXPECT_FALSE(hasClip("C1"));
}

TEST_F(ContentCacheTest, StillCountsTheInsertionOfARemovedFile) {
    m_cache.cacheContent("F1", content());
    m_cache.removeAllDataRelatedToCorrectionFilePath("F1");
    for (const char* file : {"F1", "F2"}) m_cache.cacheContent(file, content());
    EXPECT_FALSE(hasFile("F1"));
    EXPECT_TRUE(hasFile("F2"));
}

TEST_F(ContentCacheTest, ReplacesTheFileOfAClip) {
    const auto newer = content();
    m_cache.cacheContent("C1", "F1", content());
    m_cache.cacheContent("C1", "F2", newer);
    std::shared_ptr<Content> found;
    m_cache.cachedContentForClipFilePath("C1", found);
    EXPECT_EQ(found, newer);
}

TEST_F(ContentCacheTest, ReplacesTheContentOfAFile) {
    const auto newer = content();
    m_cache.cacheContent("F1", content());
    m_cache.cacheContent("F1", newer);
    std::shared_ptr<Content> found;
    m_cache.cachedContentForCorrectionFilePath("F1", found);
    EXPECT_EQ(found, newer);
}
