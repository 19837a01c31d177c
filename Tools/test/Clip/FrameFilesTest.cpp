#include "Clip/FrameFiles.h"

#include <gtest/gtest.h>

#include "Support/FailureText.h"
#include "Support/TemporaryFolder.h"

using Tools::FrameFiles;
using Files = std::map<std::int32_t, std::string>;
using Tools::clipFilePath;
using Tools::FilePattern;
using Tools::shownClipPath;

namespace {

std::string failure(const std::string& clip) {
    return failureOf([&] { FrameFiles::find(clip); });
}

} // namespace

TEST(FrameFiles, FindsTheFramesOfAPattern) {
    Support::TemporaryFolder folder;
    for (const char* name : {"a.1001.exr", "a.1002.exr", "a.1004.exr", "b.1003.exr", ".a.1005.exr", "a.1006.exr.tmp"}) {
        folder.write(name);
    }
    const FrameFiles frames = FrameFiles::find(folder.path("a.####.exr"));
    EXPECT_EQ(frames.files, (Files{{1001, folder.path("a.1001.exr")},
                                   {1002, folder.path("a.1002.exr")},
                                   {1004, folder.path("a.1004.exr")}}));
    EXPECT_TRUE(frames.pattern.hasFrameNumber());
}

TEST(FrameFiles, KeepsTheNamesOnDiskWhateverTheirPadding) {
    Support::TemporaryFolder folder;
    folder.write("a.7.exr");
    EXPECT_EQ(FrameFiles::find(folder.path("a.%04d.exr")).files, (Files{{7, folder.path("a.7.exr")}}));
}

TEST(FrameFiles, RefusesAFrameThatExistsTwiceNamingBoth) {
    Support::TemporaryFolder folder;
    folder.write("a.1.exr");
    folder.write("a.0001.exr");
    const std::string expected = "wrong use: Frame 1 exists twice: \"" + folder.path("a.0001.exr") + "\" and \"" +
                                 folder.path("a.1.exr") + "\". Move one of them away.";
    EXPECT_EQ(failure(folder.path("a.%04d.exr")), expected);
    EXPECT_EQ(failure(folder.path()), expected);
}

TEST(FrameFiles, TakesAnExistingFileAsItStands) {
    Support::TemporaryFolder folder;
    const std::string file = folder.write("a#.1001.exr");
    const FrameFiles frames = FrameFiles::find(file);
    EXPECT_EQ(frames.files, (Files{{1001, file}}));
    EXPECT_FALSE(frames.pattern.hasFrameNumber());
}

TEST(FrameFiles, NumbersASingleFileByTheEndOfItsStem) {
    Support::TemporaryFolder folder;
    EXPECT_EQ(FrameFiles::find(folder.write("shot_0020.exr")).files.begin()->first, 20);
    EXPECT_EQ(FrameFiles::find(folder.write("shot.-012.exr")).files.begin()->first, -12);
    EXPECT_EQ(FrameFiles::find(folder.write("0042.exr")).files.begin()->first, 42);
}

TEST(FrameFiles, NumbersASingleFileWithoutANumberOne) {
    Support::TemporaryFolder folder;
    EXPECT_EQ(FrameFiles::find(folder.write("A001C002.mov")).files.begin()->first, 1);
    EXPECT_EQ(FrameFiles::find(folder.write("plate.exr")).files.begin()->first, 1);
}

TEST(FrameFiles, TakesAFolderWithOneSequence) {
    Support::TemporaryFolder folder;
    for (const char* name : {"a.0099.exr", "a.0100.exr", "a.12345.exr", "a.olcf", "notes.1.txt", ".a.0001.exr"}) {
        folder.write(name);
    }
    folder.write("sub/c.0001.exr");
    const FrameFiles frames = FrameFiles::find(folder.path());
    EXPECT_EQ(frames.pattern.string(), folder.path("a.%04d.exr"));
    EXPECT_EQ(frames.files.size(), 3u);
}

TEST(FrameFiles, SeesThatNumbersAreNotPadded) {
    Support::TemporaryFolder folder;
    for (const char* name : {"a.8.exr", "a.9.exr", "a.10.exr"}) folder.write(name);
    EXPECT_EQ(FrameFiles::find(folder.path()).pattern.string(), folder.path("a.%d.exr"));
}

TEST(FrameFiles, RefusesAFolderWithSeveralSequencesNamingThem) {
    Support::TemporaryFolder folder;
    for (const char* name : {"a.0001.exr", "b.0001.exr", "a.0001.dpx"}) folder.write(name);
    EXPECT_EQ(failure(folder.path()),
              "wrong use: Folder \"" + folder.path() + "\" contains several image sequences; choose one:\n  " +
                  folder.path("a.%04d.dpx") + "\n  " + folder.path("a.%04d.exr") + "\n  " + folder.path("b.%04d.exr"));
}

TEST(FrameFiles, RefusesAFolderWithoutASequence) {
    Support::TemporaryFolder folder;
    folder.write("a.txt");
    EXPECT_EQ(failure(folder.path()), "wrong use: Folder \"" + folder.path() + "\" contains no image sequence.");
}

TEST(FrameFiles, SaysWhatDoesNotExist) {
    Support::TemporaryFolder folder;
    EXPECT_EQ(failure(folder.path("a.exr")), "wrong use: Clip \"" + folder.path("a.exr") + "\" does not exist.");
    EXPECT_EQ(failure(folder.path("a.%04d.exr")),
              "wrong use: No file matches the pattern \"" + folder.path("a.%04d.exr") + "\".");
    EXPECT_EQ(failure(folder.path("no/a.%04d.exr")), "wrong use: Folder \"" + folder.path("no") + "\" of the clip \"" +
                                                         folder.path("no/a.%04d.exr") + "\" does not exist.");
}

TEST(FrameFiles, TellsHowASequenceIsNamedToWhoWritesAStar) {
    Support::TemporaryFolder folder;
    folder.write("a.1.exr");
    EXPECT_EQ(failure(folder.path("a.*.exr")),
              "wrong use: Clip \"" + folder.path("a.*.exr") +
                  "\" does not exist. Write a sequence with %04d or #### in place of the frame number.");
}

TEST(FrameFiles, RefusesACorrectionFile) {
    Support::TemporaryFolder folder;
    folder.write("a.olcf");
    EXPECT_EQ(failure(folder.path("a.olcf")),
              "wrong use: \"" + folder.path("a.olcf") + "\" is a correction file; give the clip that it belongs to.");
}

TEST(FrameFiles, RefusesADevice) {
    EXPECT_EQ(failure("/dev/null"), "wrong use: \"/dev/null\" is not a file that can be read as a clip.");
}

namespace {

FrameFiles fileAt(const std::string& path) { return {FilePattern::singleFile(path), {{1, path}}}; }

FrameFiles sequence(const std::string& path) {
    const FilePattern pattern = FilePattern::parse(path, FilePattern::Use::Input);
    return {pattern, {{7, pattern.path(7)}, {8, pattern.path(8)}}};
}

} // namespace

TEST(ClipPath, IsThePartBeforeTheFirstDotForPicturesOfEveryFormat) {
    EXPECT_EQ(clipFilePath(fileAt("/shots/A003C012_200101_R1AB.0001234.exr")), "/shots/A003C012_200101_R1AB");
    EXPECT_EQ(clipFilePath(fileAt("/shots/A003.graded.0001.DPX")), "/shots/A003");
    EXPECT_EQ(clipFilePath(fileAt("/shots/A001.0001.tif")), "/shots/A001");
    EXPECT_EQ(clipFilePath(sequence("/shots/A003C012_200101_R1AB.%07d.exr")), "/shots/A003C012_200101_R1AB");
    EXPECT_EQ(clipFilePath(sequence("/shots/A003.graded.%04d.tif")), "/shots/A003");
    EXPECT_EQ(clipFilePath(sequence("/shots/A003.####.JPG")), "/shots/A003");
}

TEST(ClipPath, HasNoFrameNumberThatIsSetApartByALineInsteadOfADot) {
    EXPECT_EQ(clipFilePath(sequence("/shots/plate_v2_%04d.exr")), "/shots/plate_v2");
    EXPECT_EQ(clipFilePath(sequence("/shots/plate-%04d.png")), "/shots/plate");
    EXPECT_EQ(clipFilePath(sequence("/shots/plate%04d.png")), "/shots/plate");
}

TEST(ClipPath, KeepsALineThatBelongsToTheName) {
    EXPECT_EQ(clipFilePath(sequence("/shots/plate_.%04d.exr")), "/shots/plate_");
}

TEST(ClipPath, KeepsANumberOfOnePictureSinceItMayBelongToTheName) {
    EXPECT_EQ(clipFilePath(fileAt("/shots/A003C012_200101.exr")), "/shots/A003C012_200101");
}

TEST(ClipPath, IsTheFirstFramesNumberWhereNothingElseIsInTheName) {
    EXPECT_EQ(clipFilePath(sequence("/shots/%04d.exr")), "/shots/0007");
    EXPECT_EQ(clipFilePath(sequence("/shots/_%04d.exr")), "/shots/_0007");
}

TEST(ClipPath, IsTheFileItselfForEverythingElse) {
    EXPECT_EQ(clipFilePath(fileAt("/shots/A001C002.mov")), "/shots/A001C002.mov");
    EXPECT_EQ(clipFilePath(fileAt("/shots/A001C002.R3D")), "/shots/A001C002.R3D");
}

TEST(ClipPath, IsAbsoluteAndWithoutDetours) {
    EXPECT_EQ(clipFilePath(fileAt("/shots/x/../y/./A001C002.mov")), "/shots/y/A001C002.mov");
    EXPECT_EQ(clipFilePath(fileAt("A001C002.mov")).front(), '/');
}

TEST(ClipPath, IsShownWithAnExtensionByWhichTheNodesKnowASequence) {
    EXPECT_EQ(shownClipPath(sequence("/shots/A001.%04d.exr")), "/shots/A001.exr");
    EXPECT_EQ(shownClipPath(sequence("/shots/A001.%04d.DPX")), "/shots/A001.dpx");
    EXPECT_EQ(shownClipPath(sequence("/shots/A001_%04d.tif")), "/shots/A001.exr");
    EXPECT_EQ(shownClipPath(fileAt("/shots/A001.mov")), "/shots/A001.mov");
}
