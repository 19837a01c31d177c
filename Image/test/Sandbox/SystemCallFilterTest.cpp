#include "Sandbox/SystemCallFilter.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <thread>

#include "Support/RawExr.h"
#include "Support/TemporaryFolder.h"

using Image::forbidHarmfulSystemCalls;

namespace {

/// The error number of a call in a process that has the filter; 0 if it went through, 255 without a filter.
template <typename Call>
int errorOf(Call call) {
    const pid_t process = ::fork();
    if (process == 0) {
        if (!forbidHarmfulSystemCalls()) ::_exit(255);
        errno = 0;
        ::_exit(call() < 0 ? errno : 0);
    }
    int status = 0;
    ::waitpid(process, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

} // namespace

TEST(SystemCallFilter, ForbidsSockets) {
    for (const int family : {AF_INET, AF_INET6, AF_UNIX})
        EXPECT_EQ(errorOf([&] { return ::socket(family, SOCK_STREAM, 0); }), EPERM) << family;
}

TEST(SystemCallFilter, ForbidsEveryChangeOfFiles) {
    const Support::TemporaryFolder folder;
    const std::string path = folder.path("a"), other = folder.path("b");
    writeBytes(path, "content");
    EXPECT_EQ(errorOf([&] { return ::open(path.c_str(), O_WRONLY); }), EPERM);
    EXPECT_EQ(errorOf([&] { return ::open(path.c_str(), O_RDWR); }), EPERM);
    EXPECT_EQ(errorOf([&] { return ::open(other.c_str(), O_RDONLY | O_CREAT, 0666); }), EPERM);
    EXPECT_EQ(errorOf([&] { return ::open(path.c_str(), O_RDONLY | O_TRUNC); }), EPERM);
    EXPECT_EQ(errorOf([&] { return ::unlink(path.c_str()); }), EPERM);
    EXPECT_EQ(errorOf([&] { return ::rename(path.c_str(), other.c_str()); }), EPERM);
    EXPECT_EQ(errorOf([&] { return ::symlink(path.c_str(), other.c_str()); }), EPERM);
    EXPECT_EQ(errorOf([&] { return ::truncate(path.c_str(), 0); }), EPERM);
    EXPECT_EQ(errorOf([&] { return ::chmod(path.c_str(), 0); }), EPERM);
    EXPECT_EQ(errorOf([&] { return ::mkdir(other.c_str(), 0777); }), EPERM);
    EXPECT_EQ(readBytes(path), "content");
}

TEST(SystemCallFilter, ForbidsOtherProgramsAndProcesses) {
    EXPECT_EQ(errorOf([] { return ::fork(); }), EPERM);
    EXPECT_EQ(errorOf([] { return ::execl("/bin/true", "true", nullptr); }), EPERM);
    EXPECT_EQ(errorOf([] { return ::kill(::getppid(), 0); }), EPERM);
    EXPECT_EQ(errorOf([] {
                  pid_t process = 0;
                  char name[] = "true";
                  char* arguments[] = {name, nullptr};
                  errno = ::posix_spawn(&process, "/bin/true", nullptr, nullptr, arguments, environ);
                  return errno == 0 ? 0 : -1;
              }),
              EPERM);
}

TEST(SystemCallFilter, AllowsReadingFilesAndStartingThreads) {
    const Support::TemporaryFolder folder;
    const std::string path = folder.path("a");
    writeBytes(path, "content");
    EXPECT_EQ(errorOf([&] {
                  bool isRead = false;
                  std::thread([&] { isRead = readBytes(path) == "content"; }).join();
                  return isRead ? 0 : -1;
              }),
              0);
}

TEST(SystemCallFilter, LetsAProcessAbort) {
    EXPECT_EQ(errorOf([]() -> int { ::abort(); }), -SIGABRT);
}
