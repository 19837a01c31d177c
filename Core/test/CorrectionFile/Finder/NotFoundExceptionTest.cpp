#include "CorrectionFile/Finder/NotFoundException.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using CorrectionFile::NotFoundException;

TEST(NotFoundException, ListsTheSearchedFoldersEachOnALineOfItsOwnEndedByALineFeed) {
    EXPECT_EQ(NotFoundException("/a/b/c.mov", {"/a/b", "/a"}).detailedDescription(),
              "Correction file could not be found.\n"
              "Clip File Path: \"/a/b/c.mov\"\n"
              "Searched Directory Paths:\n"
              "\t\"/a/b\"\n"
              "\t\"/a\"\n"
              "\n");
}

TEST(NotFoundException, KeepsTheSearchedFoldersInTheirOrder) {
    EXPECT_THAT(NotFoundException("/a/b/c.mov", {"/a/b", "/a"}).searchedDirectoryPaths(),
                testing::ElementsAre("/a/b", "/a"));
}
