#include "CorrectionData/ContainerManager/CorrectionFileBasedContainerManagerDataSource.h"

#include <gtest/gtest.h>

#include "CorrectionFile/Finder/NotFoundException.h"
#include "CorrectionFile/Parser/InvalidFormatException.h"
#include "CorrectionFile/Reader/Reader.h"
#include "Support/CorrectionFileText.h"
#include "Support/TemporaryFolder.h"

using CorrectionData::Content;
using CorrectionData::CorrectionFileBasedContainerManagerDataSource;

namespace {

class FileBasedDataSourceTest : public testing::Test {
protected:
    const Support::TemporaryFolder m_folder;
    CorrectionFileBasedContainerManagerDataSource m_source{CorrectionFile::LevelOfDepth{1, 0, 0}};
    std::string m_path = "untouched";
    Content m_content;

    FileBasedDataSourceTest() { m_content.header.clipName = "untouched"; }

    void expectUntouched() const {
        EXPECT_EQ(m_path, "untouched");
        EXPECT_EQ(m_content.header.clipName, "untouched");
    }
};

} // namespace

TEST_F(FileBasedDataSourceTest, FindsReadsAndParsesAClipsFile) {
    const std::string file = m_folder.write("lens/A001C002.olcf", Support::CorrectionFileText().string());
    m_source.content(m_folder.path("A001C002.mov"), m_path, m_content);
    EXPECT_EQ(m_path, file);
    EXPECT_EQ(m_content.header.videoFileName, "A001C002.mov");
}

TEST_F(FileBasedDataSourceTest, SearchesNoDeeperThanItsLevelOfDepth) {
    m_folder.write("lens/deep/A001C002.olcf", Support::CorrectionFileText().string());
    EXPECT_THROW(m_source.content(m_folder.path("A001C002.mov"), m_path, m_content), CorrectionFile::NotFoundException);
    expectUntouched();
}

TEST_F(FileBasedDataSourceTest, ReadsAndParsesAGivenFileWithoutLookingAtItsName) {
    const std::string file = m_folder.write("anything.txt", Support::CorrectionFileText().string());
    m_source.content(file, m_content);
    EXPECT_EQ(m_content.header.clipName, "A001C002");
}

TEST_F(FileBasedDataSourceTest, PassesOnThatAFileIsNotReadable) {
    EXPECT_THROW(m_source.content(m_folder.path("missing.olcf"), m_content), CorrectionFile::NotReadableException);
    expectUntouched();
}

TEST_F(FileBasedDataSourceTest, PassesOnThatAFilesFormatIsInvalidAndLeavesTheOutputsUntouched) {
    // The finder reads the header only, so a file with a bad body is found.
    m_folder.write("A001C002.olcf", Support::CorrectionFileText().withFrameLine("0;1,2,3").string());
    EXPECT_THROW(m_source.content(m_folder.path("A001C002.mov"), m_path, m_content),
                 CorrectionFile::InvalidFormatException);
    expectUntouched();
}
