#include "Logger/LogEntry.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "Support/OrdinaryUser.h"
#include "Support/TemporaryFolder.h"
#include "Support/TextOfFile.h"

using Support::textOfFile;

namespace {

class LogEntry : public testing::Test {
protected:
    static void write(const std::string& path, const std::string& text) { Core::LogEntry(path).write(text); }

    Support::TemporaryFolder folder;
    const std::string path = folder.path("x.log");
};

} // namespace

TEST_F(LogEntry, CreatesTheFileAndEndsTheTextWithALineFeed) {
    write(path, "text");
    EXPECT_EQ(textOfFile(path), "text\n");
}

TEST_F(LogEntry, CreatesTheFileWhenItIsOpened) {
    const Core::LogEntry entry(path);
    EXPECT_TRUE(std::filesystem::is_regular_file(path));
}

TEST_F(LogEntry, KeepsWhatTheFileHeldBefore) {
    folder.write("x.log", "earlier\n");
    write(path, "later");
    EXPECT_EQ(textOfFile(path), "earlier\nlater\n");
}

TEST_F(LogEntry, HandsTheTextToTheSystemBeforeItIsClosed) {
    Core::LogEntry entry(path);
    entry.write("text");
    EXPECT_EQ(textOfFile(path), "text\n");
}

TEST_F(LogEntry, AppendsBehindWhatAnotherEntryWroteMeanwhile) {
    Core::LogEntry first(path);
    Core::LogEntry second(path);
    first.write("1");
    second.write("2");
    first.write("3");
    EXPECT_EQ(textOfFile(path), "1\n2\n3\n");
}

TEST_F(LogEntry, WritesEveryByteOfTheText) {
    const std::string bytes("a\0b\r\n\xff", 6);
    write(path, bytes);
    EXPECT_EQ(textOfFile(path), bytes + "\n");
}

TEST_F(LogEntry, DoesNotFollowAPlantedLinkToDamageAnotherFile) {
    folder.write("victim", "precious");
    std::filesystem::create_symlink("victim", path);
    write(path, "text");
    EXPECT_EQ(textOfFile(folder.path("victim")), "precious");
}

TEST_F(LogEntry, DoesNotCreateAFileWhereAPlantedLinkPoints) {
    std::filesystem::create_symlink("victim", path);
    write(path, "text");
    EXPECT_FALSE(std::filesystem::exists(folder.path("victim")));
}

TEST_F(LogEntry, DoesNotWaitForTheReaderOfAPlantedPipe) {
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    write(path, "text");
    EXPECT_TRUE(std::filesystem::is_fifo(path));
}

TEST_F(LogEntry, WritesNothingIntoAPlantedPipeThatSomebodyReads) {
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    const int reader = open(path.c_str(), O_RDONLY | O_NONBLOCK);
    ASSERT_GE(reader, 0);
    write(path, "text");
    char byte = 0;
    EXPECT_EQ(read(reader, &byte, 1), 0);
    close(reader);
}

TEST_F(LogEntry, LosesTheTextWhenTheFolderIsMissing) {
    write(folder.path("missing/x.log"), "text");
    EXPECT_FALSE(std::filesystem::exists(folder.path("missing")));
}

TEST_F(LogEntry, LosesTheTextWhenThePathIsAFolder) {
    write(folder.makeFolder("x.log"), "text");
    EXPECT_TRUE(std::filesystem::is_empty(path));
}

TEST_F(LogEntry, LosesTheTextWhenThePathIsEmptyOrHoldsAZeroByte) {
    write("", "text");
    write(path + std::string("\0y", 2), "text");
    EXPECT_FALSE(std::filesystem::exists(path));
}

TEST_F(LogEntry, LosesTheTextWhenTheFileMayNotBeWritten) {
    folder.write("x.log", "earlier\n");
    EXPECT_EQ(Support::asOrdinaryUser([&] {
                  write(path, "text");
                  return textOfFile(path);
              }),
              "earlier\n");
}
