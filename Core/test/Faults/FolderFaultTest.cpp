// Folders vanish or fail while a correction file is searched in them.

#include "Faults/FolderFault.h"

#include <gtest/gtest.h>

#include <boost/filesystem.hpp>
#include <cerrno>
#include <filesystem>
#include <string>

#include "CorrectionFile/Finder/ClipFilePathBasedFinder.h"
#include "CorrectionFile/Finder/NotFoundException.h"
#include "Support/CorrectionFileText.h"
#include "Support/TemporaryFolder.h"

namespace {

/// The clip is project/shot/A001.mov.
class FolderFaultInFinder : public testing::Test {
protected:
    FolderFaultInFinder() { folder.write("project/shot/A001.mov", ""); }
    ~FolderFaultInFinder() override { FolderFault::clear(); }

    void removeWhenOpened(const std::string& path) const {
        FolderFault::beforeOpening(folder.path(path), [this, path] { std::filesystem::remove_all(folder.path(path)); });
    }

    void writeCorrectionFile(const std::string& path) const {
        folder.write(path, Support::CorrectionFileText().with("videoFileName", "A001.mov").string());
    }

    /// The found file, or the error.
    std::string search(CorrectionFile::LevelOfDepth depths) const {
        std::string found = "untouched";
        try {
            CorrectionFile::ClipFilePathBasedFinder(folder.path("project/shot/A001.mov"), depths).find(found);
            return relative(found);
        } catch (const CorrectionFile::NotFoundException&) {
            return found == "untouched" ? "not found" : found;
        } catch (const boost::filesystem::filesystem_error& error) {
            return "error " + std::to_string(error.code().value()) + " of " + relative(error.path1().string());
        }
    }

    std::string relative(const std::string& path) const {
        return std::filesystem::path(path).lexically_relative(folder.path()).string();
    }

    Support::TemporaryFolder folder;
};

constexpr CorrectionFile::LevelOfDepth around = {2, 1, 2};

} // namespace

TEST_F(FolderFaultInFinder, PassesOverASubfolderThatVanishesBeforeItIsSearched) {
    folder.makeFolder("project/shot/gone");
    removeWhenOpened("project/shot/gone");
    EXPECT_EQ(search({1, 0, 0}), "not found");
    folder.makeFolder("project/shot/gone");
    writeCorrectionFile("project/A001.olcf");
    EXPECT_EQ(search({1, 1, 0}), "project/A001.olcf");
}

TEST_F(FolderFaultInFinder, PassesOverASubfolderThatVanishesBeforeItsOwnAreListed) {
    folder.makeFolder("project/shot/gone/inner");
    removeWhenOpened("project/shot/gone");
    EXPECT_EQ(search(around), "not found");
}

TEST_F(FolderFaultInFinder, PassesOverASubfolderThatBecomesAFile) {
    folder.makeFolder("project/gone");
    FolderFault::beforeOpening(folder.path("project/gone"), [this] {
        std::filesystem::remove_all(folder.path("project/gone"));
        folder.write("project/gone", "");
    });
    EXPECT_EQ(search(around), "not found");
}

TEST_F(FolderFaultInFinder, PassesOverTheFolderOfAProcessThatHasEnded) {
    folder.makeFolder("project/4711");
    FolderFault::failReading(folder.path("project/4711"), 0, ESRCH);
    EXPECT_EQ(search(around), "not found");
}

TEST_F(FolderFaultInFinder, TellsThatTheClipsFolderIsMissing) {
    removeWhenOpened("project/shot");
    EXPECT_EQ(search(around), "error 2 of project/shot");
}

TEST_F(FolderFaultInFinder, GoesOnPastAFolderThatFailsWhileItIsRead) {
    for (const char* const name : {"a", "b", "c", "d"}) folder.makeFolder(std::string("project/shot/") + name);
    writeCorrectionFile("project/A001.olcf");
    FolderFault::failReading(folder.path("project/shot"), 3, EIO);
    EXPECT_EQ(search(around), "project/A001.olcf");
}

TEST_F(FolderFaultInFinder, NamesTheFolderThatFailedWhileItWasReadIfNothingIsFound) {
    for (const char* const name : {"a", "b", "c", "d"}) folder.makeFolder(std::string("project/shot/") + name);
    for (const int afterEntries : {0, 1, 2, 3, 4, 5}) {
        FolderFault::failReading(folder.path("project/shot"), afterEntries, EIO);
        EXPECT_EQ(search({2, 0, 0}), "error 5 of project/shot") << afterEntries;
    }
}

TEST_F(FolderFaultInFinder, NamesTheFirstOfSeveralFoldersThatFailed) {
    folder.makeFolder("project/shot/inner");
    FolderFault::failReading(folder.path("project/shot/inner"), 2, EIO);
    FolderFault::failReading(folder.path("project"), 2, EMFILE);
    EXPECT_EQ(search(around), "error 5 of project/shot/inner");
}
