#include "CorrectionData/ContainerManager/ContainerManager.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <vector>

#include "Exception/Exception.h"

using CorrectionData::ContainerManager;
using CorrectionData::Content;
using CorrectionData::FileMismatchException;
using testing::ElementsAre;

namespace {

/// Files in memory: clip "/clips/X.mov" has the correction file "/files/X.olcf", made for the clip X.mov named X.
class FakeFiles : public CorrectionData::ContainerManagerDataSource {
public:
    std::vector<std::string>& loads;
    const bool& fails;

    FakeFiles(std::vector<std::string>& loadsMade, const bool& shouldFail) : loads(loadsMade), fails(shouldFail) {}

    void content(const std::string& clipFilePath, std::string& correctionFilePath, Content& content) override {
        correctionFilePath = "/files/" + stem(clipFilePath) + ".olcf";
        this->content(correctionFilePath, content);
    }
    void content(const std::string& correctionFilePath, Content& content) override {
        loads.push_back(correctionFilePath);
        if (fails) throw Exception("Correction file could not be read.");
        content.header.videoFileName = stem(correctionFilePath) + ".mov";
        content.header.clipName = stem(correctionFilePath);
    }

private:
    static std::string stem(const std::string& path) {
        const std::size_t start = path.rfind('/') + 1;
        return path.substr(start, path.rfind('.') - start);
    }
};

class ContainerManagerTest : public testing::Test {
protected:
    std::vector<std::string> m_loads;
    bool m_fails = false;
    ContainerManager m_manager{std::make_unique<FakeFiles>(m_loads, m_fails), 2};

    std::shared_ptr<Content> contentOf(const std::string& clipFilePath) {
        std::shared_ptr<Content> content;
        m_manager.shareContent(clipFilePath, content);
        return content;
    }

    std::shared_ptr<Content> contentOf(const std::string& clipFileName, const std::string& correctionFilePath) {
        std::shared_ptr<Content> content;
        m_manager.shareContent(clipFileName, correctionFilePath, content);
        return content;
    }

    void expectMismatch(const std::function<void()>& operation) {
        try {
            operation();
            FAIL();
        } catch (const FileMismatchException& exception) {
            EXPECT_EQ(exception.detailedDescription(),
                      "Correction file does not belong to the clip.\nClip File Name: \"B.mov\"\n"
                      "Correction File Path: \"/files/A.olcf\"\nClip File Name in Correction File: \"A.mov\"\n");
        }
    }
};

} // namespace

TEST_F(ContainerManagerTest, LoadsAClipsContentOnceAndSharesIt) {
    const auto first = contentOf("/clips/A.mov");
    EXPECT_EQ(contentOf("/clips/A.mov"), first);
    EXPECT_THAT(m_loads, ElementsAre("/files/A.olcf"));
}

TEST_F(ContainerManagerTest, SharesContentBetweenBothWaysOfAsking) {
    const auto byPath = contentOf("/clips/A.mov");
    EXPECT_EQ(contentOf("A.mov", "/files/A.olcf"), byPath);
    EXPECT_EQ(m_loads.size(), 1u);
}

TEST_F(ContainerManagerTest, SearchesAClipsFileEvenWhenTheFileIsCachedByItsOwnPath) {
    contentOf("A.mov", "/files/A.olcf");
    contentOf("/clips/A.mov");
    EXPECT_EQ(m_loads.size(), 2u);
}

TEST_F(ContainerManagerTest, DoesNotCheckNamesForAFileThatWasFoundByTheClipsPath) {
    EXPECT_EQ(contentOf("/elsewhere/A.mxf")->header.videoFileName, "A.mov");
}

TEST_F(ContainerManagerTest, AcceptsAClipNamedByTheFilesVideoFileName) {
    EXPECT_EQ(contentOf("A.mov", "/files/A.olcf")->header.clipName, "A");
}

TEST_F(ContainerManagerTest, AcceptsAClipNamedByTheFilesClipNameOnly) {
    EXPECT_EQ(contentOf("A", "/files/A.olcf")->header.clipName, "A");
    EXPECT_EQ(contentOf("A", "/files/A.olcf")->header.clipName, "A") << "cached";
}

TEST_F(ContainerManagerTest, RejectsAFileOfAnotherClipAndCachesNothing) {
    expectMismatch([this] { contentOf("B.mov", "/files/A.olcf"); });
    contentOf("A.mov", "/files/A.olcf");
    EXPECT_EQ(m_loads.size(), 2u);
}

TEST_F(ContainerManagerTest, RejectsAFileOfAnotherClipThatIsCachedThroughTheClipsPath) {
    contentOf("/clips/A.mov");
    expectMismatch([this] { contentOf("B.mov", "/files/A.olcf"); });
}

TEST_F(ContainerManagerTest, ComparesNamesWithTheirCase) {
    EXPECT_THROW(contentOf("a.mov", "/files/A.olcf"), FileMismatchException);
}

TEST_F(ContainerManagerTest, PassesFailuresOnAndLoadsAgainAfterThem) {
    m_fails = true;
    EXPECT_THROW(contentOf("/clips/A.mov"), Exception);
    EXPECT_THROW(contentOf("A.mov", "/files/A.olcf"), Exception);
    m_fails = false;
    EXPECT_EQ(contentOf("/clips/A.mov")->header.clipName, "A");
}

TEST_F(ContainerManagerTest, LoadsAgainWhatTheCacheHasDropped) {
    contentOf("/clips/A.mov");
    contentOf("/clips/B.mov");
    contentOf("/clips/C.mov");
    m_loads.clear();
    contentOf("/clips/C.mov");
    contentOf("/clips/A.mov");
    EXPECT_THAT(m_loads, ElementsAre("/files/A.olcf"));
}

TEST_F(ContainerManagerTest, KeepsDroppedContentAliveForThoseWhoHoldIt) {
    const auto held = contentOf("/clips/A.mov");
    contentOf("/clips/B.mov");
    contentOf("/clips/C.mov");
    EXPECT_EQ(held->header.clipName, "A");
}

TEST(ContainerManagerDeathTest, StopsWithoutADataSource) {
    EXPECT_DEATH(ContainerManager(nullptr, 100), "Assertion failed: dataSource\n");
}
