#include "Frames/FrameFiles.h"

#include <gtest/gtest.h>

#include "Support/FailureText.h"
#include "Support/TemporaryFolder.h"

using Host::FrameFiles;
using Files = std::map<std::int32_t, std::string>;

namespace {

std::string failure(const std::string& clip) {
    return failureOf([&] { FrameFiles::find(clip); });
}

} // namespace

TEST(FrameFiles, FindsTheFramesOfAPattern) {
    TemporaryFolder folder;
    for (const char* name : {"a.1001.exr", "a.1002.exr", "a.1004.exr", "b.1003.exr", ".a.1005.exr", "a.1006.exr.tmp"}) {
        folder.file(name);
    }
    const FrameFiles frames = FrameFiles::find(folder.path("a.####.exr"));
    EXPECT_EQ(frames.files, (Files{{1001, folder.path("a.1001.exr")},
                                   {1002, folder.path("a.1002.exr")},
                                   {1004, folder.path("a.1004.exr")}}));
    EXPECT_TRUE(frames.pattern.hasFrameNumber());
}

TEST(FrameFiles, KeepsTheNamesOnDiskWhateverTheirPadding) {
    TemporaryFolder folder;
    folder.file("a.7.exr");
    EXPECT_EQ(FrameFiles::find(folder.path("a.%04d.exr")).files, (Files{{7, folder.path("a.7.exr")}}));
}

TEST(FrameFiles, RefusesAFrameThatExistsTwiceNamingBoth) {
    TemporaryFolder folder;
    folder.file("a.1.exr");
    folder.file("a.0001.exr");
    const std::string expected = "2: Frame 1 exists twice: \"" + folder.path("a.0001.exr") + "\" and \"" +
                                 folder.path("a.1.exr") + "\". Move one of them away.";
    EXPECT_EQ(failure(folder.path("a.%04d.exr")), expected);
    EXPECT_EQ(failure(folder.path()), expected);
}

TEST(FrameFiles, TakesAnExistingFileAsItStands) {
    TemporaryFolder folder;
    const std::string file = folder.file("a#.1001.exr");
    const FrameFiles frames = FrameFiles::find(file);
    EXPECT_EQ(frames.files, (Files{{1001, file}}));
    EXPECT_FALSE(frames.pattern.hasFrameNumber());
}

TEST(FrameFiles, NumbersASingleFileByTheEndOfItsStem) {
    TemporaryFolder folder;
    EXPECT_EQ(FrameFiles::find(folder.file("shot_0020.exr")).files.begin()->first, 20);
    EXPECT_EQ(FrameFiles::find(folder.file("shot.-012.exr")).files.begin()->first, -12);
    EXPECT_EQ(FrameFiles::find(folder.file("0042.exr")).files.begin()->first, 42);
}

TEST(FrameFiles, NumbersASingleFileWithoutANumberOne) {
    TemporaryFolder folder;
    EXPECT_EQ(FrameFiles::find(folder.file("A001C002.mov")).files.begin()->first, 1);
    EXPECT_EQ(FrameFiles::find(folder.file("plate.exr")).files.begin()->first, 1);
}

TEST(FrameFiles, TakesAFolderWithOneSequence) {
    TemporaryFolder folder;
    for (const char* name : {"a.0099.exr", "a.0100.exr", "a.12345.exr", "a.olcf", "notes.1.txt", ".a.0001.exr"}) {
        folder.file(name);
    }
    folder.file("sub/c.0001.exr");
    const FrameFiles frames = FrameFiles::find(folder.path());
    EXPECT_EQ(frames.pattern.string(), folder.path("a.%04d.exr"));
    EXPECT_EQ(frames.files.size(), 3u);
}

TEST(FrameFiles, SeesThatNumbersAreNotPadded) {
    TemporaryFolder folder;
    for (const char* name : {"a.8.exr", "a.9.exr", "a.10.exr"}) folder.file(name);
    EXPECT_EQ(FrameFiles::find(folder.path()).pattern.string(), folder.path("a.%d.exr"));
}

TEST(FrameFiles, RefusesAFolderWithSeveralSequencesNamingThem) {
    TemporaryFolder folder;
    for (const char* name : {"a.0001.exr", "b.0001.exr", "a.0001.dpx"}) folder.file(name);
    EXPECT_EQ(failure(folder.path()),
              "2: Folder \"" + folder.path() + "\" contains several image sequences; choose one:\n  " +
                  folder.path("a.%04d.dpx") + "\n  " + folder.path("a.%04d.exr") + "\n  " + folder.path("b.%04d.exr"));
}

TEST(FrameFiles, RefusesAFolderWithoutASequence) {
    TemporaryFolder folder;
    folder.file("a.txt");
    EXPECT_EQ(failure(folder.path()), "2: Folder \"" + folder.path() + "\" contains no image sequence.");
}

TEST(FrameFiles, SaysWhatDoesNotExist) {
    TemporaryFolder folder;
    EXPECT_EQ(failure(folder.path("a.exr")), "2: Clip \"" + folder.path("a.exr") + "\" does not exist.");
    EXPECT_EQ(failure(folder.path("a.%04d.exr")),
              "2: No file matches the pattern \"" + folder.path("a.%04d.exr") + "\".");
    EXPECT_EQ(failure(folder.path("no/a.%04d.exr")), "2: Folder \"" + folder.path("no") + "\" of the clip \"" +
                                                         folder.path("no/a.%04d.exr") + "\" does not exist.");
}

TEST(FrameFiles, TellsHowASequenceIsNamedToWhoWritesAStar) {
    TemporaryFolder folder;
    folder.file("a.1.exr");
    EXPECT_EQ(failure(folder.path("a.*.exr")),
              "2: Clip \"" + folder.path("a.*.exr") +
                  "\" does not exist. Write a sequence with %04d or #### in place of the frame number.");
}

TEST(FrameFiles, RefusesACorrectionFile) {
    TemporaryFolder folder;
    folder.file("a.olcf");
    EXPECT_EQ(failure(folder.path("a.olcf")),
              "2: \"" + folder.path("a.olcf") + "\" is a correction file; give the clip that it belongs to.");
}

TEST(FrameFiles, RefusesADevice) {
    EXPECT_EQ(failure("/dev/null"), "2: \"/dev/null\" is not a file that can be read as a clip.");
}
