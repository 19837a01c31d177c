#include "System/AtomicFile.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <thread>
#include <vector>

#include "Files.h"
#include "ImageError.h"
#include "Report/Failure.h"
#include "Support/FailureText.h"
#include "Support/TemporaryFolder.h"

using Tools::AtomicFile;

namespace {

std::vector<std::string> namesIn(const std::string& folder) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) names.push_back(entry.path().filename());
    std::sort(names.begin(), names.end());
    return names;
}

void write(const std::string& path, const std::string& text) { std::ofstream(path, std::ios::binary) << text; }

void makeOld(const std::string& path) {
    const timespec times[2] = {{1000000000, 0}, {1000000000, 0}};
    ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
}

std::string hostName() {
    char name[65] = {};
    gethostname(name, 64);
    return name;
}

} // namespace

TEST(AtomicFile, AppearsUnderItsNameOnlyWhenCommitted) {
    Support::TemporaryFolder folder;
    AtomicFile file(folder.path("f.0001.exr"));
    write(file.temporaryPath(), "whole");
    EXPECT_FALSE(std::filesystem::exists(folder.path("f.0001.exr")));
    file.commit();
    EXPECT_EQ(folder.text("f.0001.exr"), "whole");
    EXPECT_EQ(namesIn(folder.path()), (std::vector<std::string>{"f.0001.exr"}));
}

TEST(AtomicFile, IsHiddenAndKeepsItsExtensionMeanwhile) {
    Support::TemporaryFolder folder;
    AtomicFile file(folder.path("f.0001.exr"));
    EXPECT_EQ(file.temporaryPath(), folder.path(".f.0001." + hostName() + "." + std::to_string(getpid()) + ".tmp.exr"));
}

TEST(AtomicFile, LeavesNothingWithoutACommit) {
    Support::TemporaryFolder folder;
    folder.write("f.exr", "old");
    {
        AtomicFile file(folder.path("f.exr"));
        write(file.temporaryPath(), "half");
    }
    EXPECT_EQ(namesIn(folder.path()), (std::vector<std::string>{"f.exr"}));
    EXPECT_EQ(folder.text("f.exr"), "old");
}

TEST(AtomicFile, ReplacesAnEarlierFile) {
    Support::TemporaryFolder folder;
    folder.write("f.exr", "old");
    AtomicFile file(folder.path("f.exr"));
    write(file.temporaryPath(), "new");
    file.commit();
    EXPECT_EQ(folder.text("f.exr"), "new");
}

TEST(AtomicFile, MakesParentFolders) {
    Support::TemporaryFolder folder;
    AtomicFile file(folder.path("a/b/f.exr"));
    write(file.temporaryPath(), "x");
    file.commit();
    EXPECT_EQ(folder.text("a/b/f.exr"), "x");
}

TEST(AtomicFile, RefusesANameThatAFolderHas) {
    Support::TemporaryFolder folder;
    std::filesystem::create_directory(folder.path("f.exr"));
    EXPECT_EQ(failureOf([&] { AtomicFile file(folder.path("f.exr")); }),
              "output: \"" + folder.path("f.exr") + "\" is a folder; name a file to write.");
}

TEST(AtomicFile, SaysWhichFolderCouldNotBeMade) {
    Support::TemporaryFolder folder;
    folder.write("a", "a file");
    EXPECT_EQ(failureOf([&] { AtomicFile file(folder.path("a/b/f.exr")); }),
              "output: Folder \"" + folder.path("a/b") + "\" could not be created: Not a directory.");
}

TEST(AtomicFile, SaysThatNothingWasWritten) {
    Support::TemporaryFolder folder;
    AtomicFile file(folder.path("f.exr"));
    EXPECT_EQ(failureOf([&] { file.commit(); }),
              "output: \"" + folder.path("f.exr") + "\" could not be written: No data available.");
}

TEST(AtomicFile, CutsLongNamesApart) {
    Support::TemporaryFolder folder;
    const std::string longName(250, 'n');
    AtomicFile first(folder.path(longName + "1.a"));
    AtomicFile second(folder.path(longName + "2.a"));
    write(first.temporaryPath(), "1");
    write(second.temporaryPath(), "2");
    EXPECT_NE(first.temporaryPath(), second.temporaryPath());
    first.commit();
    second.commit();
    EXPECT_EQ(folder.text(longName + "1.a"), "1");
    EXPECT_EQ(folder.text(longName + "2.a"), "2");
}

TEST(AtomicFile, IsThereFromTheStartSoThatWritersNeedNotMakeIt) {
    Support::TemporaryFolder folder;
    AtomicFile file(folder.path("f.exr"));
    Image::OutputFile writer(file.temporaryPath(), false);
    writer.write("whole", 5, 0);
    writer.close();
    file.commit();
    EXPECT_EQ(folder.text("f.exr"), "whole");
}

TEST(AtomicFile, SaysThatItWasTakenAway) {
    Support::TemporaryFolder folder;
    AtomicFile file(folder.path("f.exr"));
    write(file.temporaryPath(), "whole");
    std::filesystem::remove(file.temporaryPath());
    EXPECT_EQ(failureOf([&] { file.commit(); }),
              "output: \"" + folder.path("f.exr") + "\" could not be written: No such file or directory.");
}

// The removal is for the rest of a process, so each case ends a process of its own.
class AtomicFileDeathTest : public testing::Test {
protected:
    /// The names in the folder after a child process has run this and ended.
    template <typename Run>
    std::vector<std::string> namesAfter(Run run) {
        EXPECT_EXIT(
            {
                run();
                std::_Exit(HasFailure() ? 1 : 0);
            },
            testing::ExitedWithCode(0), "");
        return namesIn(m_folder.path());
    }

    Support::TemporaryFolder m_folder;
};

TEST_F(AtomicFileDeathTest, RemovesAllOpenOnesWhenTheProcessMustEnd) {
    EXPECT_EQ(namesAfter([&] {
                  AtomicFile first(m_folder.path("1.exr"));
                  AtomicFile second(m_folder.path("2.exr"));
                  write(first.temporaryPath(), "1");
                  write(second.temporaryPath(), "2");
                  AtomicFile::removeAllNow();
                  EXPECT_EQ(failureOf([&] { first.commit(); }),
                            "output: \"" + first.path() + "\" could not be written: No such file or directory.");
              }),
              std::vector<std::string>{});
}

TEST_F(AtomicFileDeathTest, MakesNoneOnceTheProcessMustEnd) {
    EXPECT_EQ(namesAfter([&] {
                  AtomicFile::removeAllNow();
                  EXPECT_EQ(failureOf([&] { AtomicFile file(m_folder.path("f.exr")); }),
                            "output: \"" + m_folder.path("f.exr") + "\" could not be written: Operation canceled.");
              }),
              std::vector<std::string>{});
}

TEST_F(AtomicFileDeathTest, IsNotBroughtBackByAWriterThatComesTooLate) {
    EXPECT_EQ(namesAfter([&] {
                  AtomicFile file(m_folder.path("f.exr"));
                  AtomicFile::removeAllNow();
                  EXPECT_THROW(Image::OutputFile(file.temporaryPath(), false), Image::ImageError);
              }),
              std::vector<std::string>{});
}

TEST_F(AtomicFileDeathTest, IsRemovedWhicheverThreadsMakeOthersAtThatMoment) {
    for (int round = 0; round < 50; ++round) {
        const auto work = [&](int thread) {
            for (int number = 0;; ++number) {
                try {
                    const AtomicFile file(m_folder.path(std::to_string(thread) + "." + std::to_string(number)));
                } catch (const Tools::Failure&) {
                }
            }
        };
        EXPECT_EQ(namesAfter([&] {
                      std::vector<std::thread> threads;
                      for (int thread = 0; thread < 4; ++thread) threads.emplace_back(work, thread);
                      std::this_thread::sleep_for(std::chrono::microseconds(round * 100));
                      AtomicFile::removeAllNow();
                      std::_Exit(0);
                  }),
                  std::vector<std::string>{});
    }
}

TEST(AtomicFile, RemovesWhatAKilledProcessOfThisMachineLeft) {
    Support::TemporaryFolder folder;
    // Larger than any process number that the kernel gives out.
    const std::string left = ".f." + hostName() + ".4194305.tmp.exr";
    folder.write(left);
    makeOld(folder.path(left));
    AtomicFile::removeAbandoned(folder.path());
    EXPECT_EQ(namesIn(folder.path()), std::vector<std::string>{});
}

TEST(AtomicFile, SparesFreshFilesLiveProcessesOtherMachinesAndOtherFiles) {
    Support::TemporaryFolder folder;
    const std::string own = std::to_string(getpid());
    const std::vector<std::string> names = {".f." + hostName() + "." + own + ".tmp.exr", ".f.elsewhere.4194305.tmp.exr",
                                            ".f." + hostName() + ".4194305x.tmp.exr", ".tmp", "f.tmp.exr"};
    for (const std::string& name : names) {
        folder.write(name);
        makeOld(folder.path(name));
    }
    folder.write(".fresh." + hostName() + ".4194305.tmp.exr");
    AtomicFile::removeAbandoned(folder.path());
    EXPECT_EQ(namesIn(folder.path()).size(), names.size() + 1);
}

TEST(TextFile, holdsTheWholeText) {
    const Support::TemporaryFolder folder;
    Tools::writeTextFile(folder.path("a.txt"), "line\n");
    EXPECT_EQ("line\n", folder.text("a.txt"));
}

TEST(TextFile, isNotToReplaceWhatItIsMadeOf) {
    const Support::TemporaryFolder folder;
    folder.write("a.olcf", "x");
    std::filesystem::create_symlink(folder.path("a.olcf"), folder.path("b.svg"));
    EXPECT_EQ(
        "wrong use: The output would replace its own input, \"" + folder.path("b.svg") + "\"; choose another output.",
        failureOf([&] { Tools::refuseToReplace(folder.path("a.olcf"), folder.path("b.svg")); }));
    Tools::refuseToReplace(folder.path("a.olcf"), folder.path("c.svg"));
}

TEST(TextFile, isAFailureOfTheOutputWhereNoneCanBe) {
    const Support::TemporaryFolder folder;
    folder.write("a.txt/b", "x");
    const std::string failure = failureOf([&] { Tools::writeTextFile(folder.path("a.txt"), "line\n"); });
    EXPECT_TRUE(failure.starts_with("output: "));
}
