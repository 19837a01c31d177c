#include "Clip/ClipPath.h"

#include <gtest/gtest.h>

using Tools::clipFilePath;
using Tools::FilePattern;
using Tools::FrameFiles;
using Tools::shownClipPath;

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
