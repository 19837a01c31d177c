#include "CorrectionFile/Reader/Reader.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>

#include "Support/OrdinaryUser.h"
#include "Support/TemporaryFolder.h"

namespace {

const char* const untouched = "untouched";

// The text read, or the detailed description of what was thrown; then the text must be untouched.
std::string readText(const std::string& path) {
    std::string text = untouched;
    try {
        CorrectionFile::Reader().readFile(path, text);
    } catch (const CorrectionFile::NotReadableException& exception) {
        return text == untouched ? exception.detailedDescription() : "the text was changed on failure";
    }
    return text;
}

std::string notReadable(const std::string& path) {
    return "Correction file could not be read.\nFile Path: \"" + path + "\"\n";
}

class Reader : public testing::Test {
protected:
    Support::TemporaryFolder folder;
};

} // namespace

TEST_F(Reader, ReadsEveryByteAsItIs) {
    const std::string bytes("a\r\nb\0c\xff\xef\xbb\xbf\n\n", 13);
    EXPECT_EQ(readText(folder.write("x.olcf", bytes)), bytes);
}

TEST_F(Reader, ReadsAnEmptyFileAsAnEmptyText) { EXPECT_EQ(readText(folder.write("x.olcf", "")), ""); }

TEST_F(Reader, FollowsALinkToARegularFile) {
    std::filesystem::create_symlink(folder.write("x.olcf", "text"), folder.path("link.olcf"));
    EXPECT_EQ(readText(folder.path("link.olcf")), "text");
}

TEST_F(Reader, RefusesAMissingFile) {
    EXPECT_EQ(readText(folder.path("missing.olcf")), notReadable(folder.path("missing.olcf")));
}

TEST_F(Reader, RefusesAnEmptyPath) { EXPECT_EQ(readText(""), notReadable("")); }

TEST_F(Reader, RefusesAPathWithAZeroByteInsteadOfOpeningAShorterOne) {
    const std::string path = folder.write("x.olcf", "text") + std::string("\0.olcf", 6);
    EXPECT_EQ(readText(path), notReadable(path));
}

TEST_F(Reader, RefusesAFolder) { EXPECT_EQ(readText(folder.makeFolder("x.olcf")), notReadable(folder.path("x.olcf"))); }

TEST_F(Reader, RefusesAPipeWithoutWaitingForAWriter) {
    ASSERT_EQ(mkfifo(folder.path("x.olcf").c_str(), 0600), 0);
    EXPECT_EQ(readText(folder.path("x.olcf")), notReadable(folder.path("x.olcf")));
}

TEST_F(Reader, RefusesADevice) {
    EXPECT_EQ(readText("/dev/zero"), notReadable("/dev/zero"));
    EXPECT_EQ(readText("/dev/null"), notReadable("/dev/null"));
}

TEST_F(Reader, LeavesNoFileOpen) {
    const std::string path = folder.write("x.olcf", "text");
    const std::string huge = folder.write("huge.olcf", "");
    std::filesystem::resize_file(huge, (std::uintmax_t{1} << 30) + 1);
    const auto openFiles = [] {
        return std::distance(std::filesystem::directory_iterator("/proc/self/fd"),
                             std::filesystem::directory_iterator());
    };
    const auto before = openFiles();
    EXPECT_EQ(readText(path), "text");
    EXPECT_EQ(readText(huge), notReadable(huge));
    EXPECT_EQ(openFiles(), before);
}

TEST_F(Reader, RefusesASocket) {
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    const std::string path = folder.path("x.olcf");
    ASSERT_LT(path.size(), sizeof address.sun_path);
    std::strcpy(address.sun_path, path.c_str());
    const int descriptor = socket(AF_UNIX, SOCK_STREAM, 0);
    ASSERT_EQ(bind(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    EXPECT_EQ(readText(path), notReadable(path));
    close(descriptor);
}

TEST_F(Reader, RefusesAFileWithoutPermissionToReadIt) {
    const std::string path = folder.write("x.olcf", "text");
    ASSERT_EQ(chmod(path.c_str(), 0), 0);
    EXPECT_EQ(Support::asOrdinaryUser([&] { return readText(path); }), notReadable(path));
}

TEST_F(Reader, RefusesALinkToNothingAndALinkToItself) {
    std::filesystem::create_symlink(folder.path("missing"), folder.path("dangling.olcf"));
    std::filesystem::create_symlink(folder.path("loop.olcf"), folder.path("loop.olcf"));
    EXPECT_EQ(readText(folder.path("dangling.olcf")), notReadable(folder.path("dangling.olcf")));
    EXPECT_EQ(readText(folder.path("loop.olcf")), notReadable(folder.path("loop.olcf")));
}

TEST_F(Reader, RefusesAFileLargerThanOneGibibyte) {
    // Sparse: takes no space on disk.
    const std::string path = folder.write("x.olcf", "");
    std::filesystem::resize_file(path, (std::uintmax_t(1) << 30) + 1);
    EXPECT_EQ(readText(path), notReadable(path));
}

TEST_F(Reader, RefusesAFileThatDeliversFewerBytesThanItsSize) {
    // The kernel states one page as the size of this file, whose content is shorter.
    const std::string path = "/sys/kernel/mm/transparent_hugepage/enabled";
    std::error_code error;
    if (std::filesystem::file_size(path, error) != 4096 || error) GTEST_SKIP() << "no such file on this system";
    EXPECT_EQ(readText(path), notReadable(path));
}
