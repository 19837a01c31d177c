#include "System/RegularFile.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "Support/TemporaryFolder.h"
#include "Support/TextOfFile.h"

using System::RegularFile;

namespace {

class RegularFileTest : public testing::Test {
protected:
    Support::TemporaryFolder folder;
    const std::string path = folder.path("file");
};

} // namespace

TEST_F(RegularFileTest, IsReadInPieces) {
    folder.write("file", "abcdef");
    RegularFile file = RegularFile::toRead(path);
    ASSERT_TRUE(file.isOpen());
    EXPECT_EQ(file.size(), 6);
    std::string first(2, ' '), second(4, ' ');
    EXPECT_TRUE(file.read(first));
    EXPECT_TRUE(file.read(second));
    EXPECT_EQ(first + "|" + second, "ab|cdef");
}

TEST_F(RegularFileTest, CannotBeReadBeyondItsEnd) {
    folder.write("file", "abc");
    RegularFile file = RegularFile::toRead(path);
    std::string text(4, ' ');
    EXPECT_FALSE(file.read(text));
}

TEST_F(RegularFileTest, IsNotMadeByReadingIt) {
    EXPECT_FALSE(RegularFile::toRead(path).isOpen());
    EXPECT_FALSE(std::filesystem::exists(path));
}

TEST_F(RegularFileTest, IsMadeToAppendTo) {
    RegularFile file = RegularFile::toAppend(path);
    ASSERT_TRUE(file.isOpen());
    EXPECT_TRUE(file.append("a"));
    EXPECT_TRUE(file.append("b"));
    EXPECT_EQ(Support::textOfFile(path), "ab");
}

TEST_F(RegularFileTest, IsNotAFolderOrAPipe) {
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    for (const std::string& other : {path, folder.path("")}) {
        EXPECT_FALSE(RegularFile::toRead(other).isOpen()) << other;
        EXPECT_FALSE(RegularFile::toAppend(other).isOpen()) << other;
    }
}
