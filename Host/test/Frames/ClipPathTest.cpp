#include "Frames/ClipPath.h"

#include <gtest/gtest.h>

using Host::clipFilePath;
using Host::FilePattern;
using Host::FrameFiles;

namespace {

std::string pathOf(const std::string& file) { return clipFilePath({FilePattern::singleFile(file), {{1, file}}}); }

} // namespace

TEST(ClipPath, IsThePartBeforeTheFirstDotForPictureSequences) {
    EXPECT_EQ(pathOf("/shots/A003C012_200101_R1AB.0001234.exr"), "/shots/A003C012_200101_R1AB");
    EXPECT_EQ(pathOf("/shots/A003.graded.0001.DPX"), "/shots/A003");
}

TEST(ClipPath, IsTheFileItselfForEverythingElse) {
    EXPECT_EQ(pathOf("/shots/A001C002.mov"), "/shots/A001C002.mov");
    EXPECT_EQ(pathOf("/shots/A001.0001.tif"), "/shots/A001.0001.tif");
}

TEST(ClipPath, IsAbsoluteAndWithoutDetours) {
    EXPECT_EQ(pathOf("/shots/x/../y/./A001C002.mov"), "/shots/y/A001C002.mov");
    EXPECT_EQ(pathOf("A001C002.mov").front(), '/');
}
