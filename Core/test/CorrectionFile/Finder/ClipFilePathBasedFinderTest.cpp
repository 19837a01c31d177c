#include "CorrectionFile/Finder/ClipFilePathBasedFinder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <boost/filesystem.hpp>
#include <csignal>
#include <filesystem>
#include <memory>

#include "CorrectionFile/Finder/NotFoundException.h"
#include "Support/CorrectionFileText.h"
#include "Support/OrdinaryUser.h"
#include "Support/TemporaryFolder.h"

using CorrectionFile::LevelOfDepth;
using Support::CorrectionFileText;
using testing::Contains;
using testing::ElementsAre;
using testing::EndsWith;
using testing::Not;
using testing::UnorderedElementsAre;

namespace {

constexpr LevelOfDepth nowhereElse = {0, 0, 0};
constexpr LevelOfDepth depthsOfTheProduct = {1, 5, 2};

std::string textFor(const std::string& videoFileName, const std::string& clipName = "other") {
    return CorrectionFileText().with("videoFileName", videoFileName).with("clipName", clipName).string();
}

// A tree of folders with one clip in it. Paths are relative to its root, which stands for the folder of a project.
class ClipFilePathBasedFinder : public testing::Test {
public:
    ClipFilePathBasedFinder& givenClip(const std::string& path) {
        clip = path;
        folder.write(path, "");
        return *this;
    }

    // A correction file that belongs to the clip.
    ClipFilePathBasedFinder& withCorrectionFile(const std::string& path) {
        return withFile(path, textFor(std::filesystem::path(clip).filename()));
    }

    ClipFilePathBasedFinder& withFile(const std::string& path, const std::string& text) {
        folder.write(path, text);
        return *this;
    }

    // The found file, "nothing", or the file system's error with its folder. The searched folders end up in `searched`
    // if nothing is found.
    std::string search(LevelOfDepth depths) {
        std::string found = "untouched";
        try {
            CorrectionFile::ClipFilePathBasedFinder(folder.path(clip), depths).find(found);
            return std::filesystem::path(found).lexically_relative(folder.path()).string();
        } catch (const CorrectionFile::NotFoundException& exception) {
            searched.clear();
            for (const std::string& path : exception.searchedDirectoryPaths()) {
                searched.push_back(std::filesystem::path(path).lexically_relative(folder.path()).string());
            }
            return found == "untouched" ? "nothing" : "the path was changed on failure";
        } catch (const boost::filesystem::filesystem_error& error) {
            const auto path = std::filesystem::path(error.path1().string()).lexically_relative(folder.path());
            return error.code().message() + ": " + path.string();
        }
    }

    // What a folder holds, in the file system's own order.
    std::vector<std::string> namesIn(const std::string& path) {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(folder.path(path))) {
            names.push_back(entry.path().filename().string());
        }
        return names;
    }

    Support::TemporaryFolder folder;
    std::string clip;
    std::vector<std::string> searched;
};

} // namespace

TEST_F(ClipFilePathBasedFinder, FindsTheFileBesideTheClip) {
    givenClip("A001.mov").withCorrectionFile("A001.olcf");
    EXPECT_EQ(search(nowhereElse), "A001.olcf");
}

TEST_F(ClipFilePathBasedFinder, StoresThePathBuiltFromTheSearchedFolder) {
    givenClip("clips/A001.mov").withCorrectionFile("clips/A001.olcf");
    std::string found;
    CorrectionFile::ClipFilePathBasedFinder(folder.path("clips/./A001.mov"), nowhereElse).find(found);
    EXPECT_EQ(found, folder.path() + "/clips/./A001.olcf");
}

TEST_F(ClipFilePathBasedFinder, DoesNotListOtherFoldersWhenTheFileIsBesideTheClip) {
    givenClip("clips/A001.mov").withCorrectionFile("clips/A001.olcf");
    folder.makeFolder("clips/locked/inner");
    chmod(folder.path("clips/locked").c_str(), 0);
    EXPECT_EQ(Support::asOrdinaryUser([&] { return search({2, 0, 0}); }), "clips/A001.olcf");
    chmod(folder.path("clips/locked").c_str(), 0755);
}

TEST_F(ClipFilePathBasedFinder, SearchesOnlyTheClipFolderWhenAllDepthsAreZero) {
    givenClip("a/A001.mov").withCorrectionFile("a/b/A001.olcf").withCorrectionFile("A001.olcf");
    EXPECT_EQ(search(nowhereElse), "nothing");
    EXPECT_THAT(searched, ElementsAre("a"));
}

TEST_F(ClipFilePathBasedFinder, SearchesTheClipFolderEvenIfTheClipItselfIsMissing) {
    givenClip("A001.mov").withCorrectionFile("A001.olcf");
    std::filesystem::remove(folder.path("A001.mov"));
    EXPECT_EQ(search(nowhereElse), "A001.olcf");
}

TEST_F(ClipFilePathBasedFinder, SearchesSubfoldersDownToTheirDepth) {
    givenClip("A001.mov").withCorrectionFile("a/b/c/A001.olcf");
    EXPECT_EQ(search({2, 0, 0}), "nothing");
    EXPECT_THAT(searched, ElementsAre(".", "a", "a/b"));
    EXPECT_EQ(search({3, 0, 0}), "a/b/c/A001.olcf");
}

TEST_F(ClipFilePathBasedFinder, SearchesTheClipFolderBeforeItsSubfoldersAndThoseBeforeItsAncestors) {
    givenClip("a/A001.mov").withCorrectionFile("A001.olcf").withCorrectionFile("a/b/A001.olcf");
    EXPECT_EQ(search({1, 1, 0}), "a/b/A001.olcf");
    withCorrectionFile("a/A001.olcf");
    EXPECT_EQ(search({1, 1, 0}), "a/A001.olcf");
}

TEST_F(ClipFilePathBasedFinder, ListsAFolderBeforeItsContents) {
    givenClip("A001.mov");
    folder.makeFolder("a/b");
    folder.makeFolder("c/d");
    EXPECT_EQ(search({2, 0, 0}), "nothing");
    ASSERT_EQ(searched.size(), 5u);
    EXPECT_EQ(searched[0], ".");
    EXPECT_EQ(searched[2], searched[1] == "a" ? "a/b" : "c/d");
    EXPECT_EQ(searched[4], searched[3] == "a" ? "a/b" : "c/d");
}

TEST_F(ClipFilePathBasedFinder, SearchesSubfoldersInTheFileSystemsOrder) {
    givenClip("A001.mov");
    for (int i = 0; i < 20; ++i) folder.makeFolder(std::to_string(i));
    std::vector<std::string> expected = {"."};
    for (const std::string& name : namesIn("")) {
        if (name != clip) expected.push_back(name);
    }
    EXPECT_EQ(search({1, 0, 0}), "nothing");
    EXPECT_EQ(searched, expected);
}

TEST_F(ClipFilePathBasedFinder, TakesTheFirstOfSeveralMatchingFilesInTheFileSystemsOrder) {
    givenClip("clip/A001.mov");
    for (int i = 0; i < 20; ++i) withCorrectionFile("clip/sub/A001-" + std::to_string(i) + ".olcf");
    EXPECT_EQ(search({1, 0, 0}), "clip/sub/" + namesIn("clip/sub").front());
}

TEST_F(ClipFilePathBasedFinder, SearchesAncestorsFromTheNearest) {
    givenClip("a/b/c/A001.mov").withCorrectionFile("A001.olcf").withCorrectionFile("a/A001.olcf");
    EXPECT_EQ(search({0, 1, 0}), "nothing");
    EXPECT_THAT(searched, ElementsAre("a/b/c", "a/b"));
    EXPECT_EQ(search({0, 5, 0}), "a/A001.olcf");
}

TEST_F(ClipFilePathBasedFinder, SearchesTheSubfoldersOfAnAncestorDownToTheirDepth) {
    givenClip("a/A001.mov").withCorrectionFile("b/c/d/A001.olcf");
    EXPECT_EQ(search({0, 1, 2}), "nothing");
    EXPECT_THAT(searched, ElementsAre("a", ".", "b", "b/c"));
    EXPECT_EQ(search({0, 1, 3}), "b/c/d/A001.olcf");
}

TEST_F(ClipFilePathBasedFinder, DoesNotSearchTheBranchAgainThatItClimbedFrom) {
    givenClip("a/b/A001.mov");
    folder.makeFolder("a/b/c/d");
    folder.makeFolder("a/e");
    EXPECT_EQ(search({1, 2, 2}), "nothing");
    EXPECT_THAT(searched, ElementsAre("a/b", "a/b/c", "a", "a/e", "."));
}

TEST_F(ClipFilePathBasedFinder, LeavesOutNoOtherFolderThatIsNamedLikeTheOneItClimbedFrom) {
    givenClip("a/b/A001.mov");
    folder.makeFolder("a/b/b");
    folder.makeFolder("a/c/b");
    EXPECT_EQ(search({1, 1, 2}), "nothing");
    EXPECT_THAT(searched, ElementsAre("a/b", "a/b/b", "a", "a/c", "a/c/b"));
}

TEST_F(ClipFilePathBasedFinder, FindsAFileInASiblingOfAnAncestorWithTheDepthsOfTheProduct) {
    givenClip("shots/day/A001/A001.mov").withCorrectionFile("metadata/lens/A001.olcf");
    EXPECT_EQ(search(depthsOfTheProduct), "metadata/lens/A001.olcf");
}

TEST_F(ClipFilePathBasedFinder, NeverSearchesAHiddenFolderOrBelowIt) {
    givenClip("a/A001.mov").withCorrectionFile("a/.hidden/A001.olcf").withCorrectionFile(".hidden/b/A001.olcf");
    EXPECT_EQ(search({2, 1, 2}), "nothing");
    EXPECT_THAT(searched, ElementsAre("a", "."));
}

TEST_F(ClipFilePathBasedFinder, SearchesTheClipFolderEvenIfItIsHidden) {
    givenClip(".a/A001.mov").withCorrectionFile(".a/A001.olcf");
    EXPECT_EQ(search(nowhereElse), ".a/A001.olcf");
}

TEST_F(ClipFilePathBasedFinder, StopsClimbingAtTheRoot) {
    constexpr LevelOfDepth allAncestors = {0, 255, 0};
    try {
        std::string found;
        CorrectionFile::ClipFilePathBasedFinder("/no-such-clip-in-the-root.mov", allAncestors).find(found);
        FAIL() << found;
    } catch (const CorrectionFile::NotFoundException& exception) {
        EXPECT_EQ(exception.detailedDescription(),
                  "Correction file could not be found.\n"
                  "Clip File Path: \"/no-such-clip-in-the-root.mov\"\n"
                  "Searched Directory Paths:\n"
                  "\t\"/\"\n"
                  "\n");
    }
}

TEST_F(ClipFilePathBasedFinder, SearchesTheRootAsTheLastAncestor) {
    givenClip("a/A001.mov");
    try {
        std::string found;
        CorrectionFile::ClipFilePathBasedFinder(folder.path(clip), {0, 255, 0}).find(found);
        FAIL() << found;
    } catch (const CorrectionFile::NotFoundException& exception) {
        EXPECT_EQ(exception.searchedDirectoryPaths().back(), "/");
    }
}

TEST_F(ClipFilePathBasedFinder, SearchesTheCurrentFolderForABareFileName) {
    givenClip("A001.mov").withCorrectionFile("a/A001.olcf");
    std::filesystem::current_path(folder.path());
    std::string found;
    CorrectionFile::ClipFilePathBasedFinder("A001.mov", depthsOfTheProduct).find(found);
    EXPECT_EQ(found, "./a/A001.olcf");
    std::filesystem::current_path("/");
}

TEST_F(ClipFilePathBasedFinder, IgnoresAnyOtherExtensionEvenInCapitals) {
    givenClip("A001.mov").withCorrectionFile("A001.OLCF").withCorrectionFile("A001.olcf.bak");
    withCorrectionFile("A001.olcf2").withCorrectionFile("A001.xolcf").withCorrectionFile("A001olcf");
    EXPECT_EQ(search(nowhereElse), "nothing");
}

TEST_F(ClipFilePathBasedFinder, TakesAFileWhoseNameContainsTheClipsNameWithoutItsExtension) {
    givenClip("A001.C002.mov").withCorrectionFile("lens of A001.C002 (v2).olcf");
    EXPECT_EQ(search(nowhereElse), "lens of A001.C002 (v2).olcf");
}

TEST_F(ClipFilePathBasedFinder, IgnoresAFileNamedOtherwiseThoughItBelongsToTheClip) {
    givenClip("A001.mov").withCorrectionFile("a001.olcf").withCorrectionFile("lens.olcf");
    EXPECT_EQ(search(nowhereElse), "nothing");
}

TEST_F(ClipFilePathBasedFinder, PassesOverAFileOfAnotherClipForALaterOneOfThisClip) {
    givenClip("A001.mov").withFile("A0010.olcf", textFor("A0010.mov")).withCorrectionFile("sub/A001.olcf");
    EXPECT_EQ(search({1, 0, 0}), "sub/A001.olcf");
}

TEST_F(ClipFilePathBasedFinder, PassesOverFilesOfOtherClipsInTheSameFolder) {
    givenClip("A001.mov").withCorrectionFile("A001-right.olcf");
    for (int i = 0; i < 10; ++i) withFile("A001-" + std::to_string(i) + ".olcf", textFor("A0010.mov"));
    EXPECT_EQ(search(nowhereElse), "A001-right.olcf");
}

TEST_F(ClipFilePathBasedFinder, AcceptsAFileWhoseClipNameIsTheClipsFileName) {
    givenClip("A001.mov").withFile("A001.olcf", textFor("other.mov", "A001.mov"));
    EXPECT_EQ(search(nowhereElse), "A001.olcf");
}

TEST_F(ClipFilePathBasedFinder, ComparesNamesExactly) {
    givenClip("A001.mov").withFile("A001.olcf", textFor("a001.mov", "A001"));
    EXPECT_EQ(search(nowhereElse), "nothing");
}

TEST_F(ClipFilePathBasedFinder, NeedsTheHeaderOnly) {
    givenClip("A001.mov")
        .withFile("A001.olcf",
                  CorrectionFileText().with("videoFileName", "A001.mov").withVersionLine("").string() + "x\n");
    EXPECT_EQ(search(nowhereElse), "A001.olcf");
}

TEST_F(ClipFilePathBasedFinder, PassesOverMalformedCandidates) {
    givenClip("A001.mov").withFile("A001.olcf", "HEADER_START\n").withCorrectionFile("sub/A001.olcf");
    EXPECT_EQ(search({1, 0, 0}), "sub/A001.olcf");
}

TEST_F(ClipFilePathBasedFinder, PassesOverACandidateWithoutPermissionToReadIt) {
    givenClip("A001.mov").withCorrectionFile("A001.olcf").withCorrectionFile("sub/A001.olcf");
    chmod(folder.path("A001.olcf").c_str(), 0);
    EXPECT_EQ(Support::asOrdinaryUser([&] { return search({1, 0, 0}); }), "sub/A001.olcf");
}

TEST_F(ClipFilePathBasedFinder, PassesOverFoldersPipesAndDeadLinksNamedLikeACandidate) {
    givenClip("A001.mov");
    folder.makeFolder("A001-folder.olcf");
    ASSERT_EQ(mkfifo(folder.path("A001-pipe.olcf").c_str(), 0600), 0);
    std::filesystem::create_symlink("missing", folder.path("A001-dangling.olcf"));
    std::filesystem::create_symlink("A001-loop.olcf", folder.path("A001-loop.olcf"));
    EXPECT_EQ(search({1, 0, 0}), "nothing");
    EXPECT_THAT(searched, ElementsAre(".", "A001-folder.olcf"));
}

TEST_F(ClipFilePathBasedFinder, TakesALinkToAFile) {
    givenClip("A001.mov").withCorrectionFile("elsewhere/lens.olcf");
    std::filesystem::create_symlink("elsewhere/lens.olcf", folder.path("A001.olcf"));
    EXPECT_EQ(search(nowhereElse), "A001.olcf");
}

TEST_F(ClipFilePathBasedFinder, SearchesALinkToAFolderButNotItsSubfolders) {
    givenClip("clips/A001.mov");
    folder.makeFolder("elsewhere/inner");
    std::filesystem::create_directory_symlink("../elsewhere", folder.path("clips/link"));
    EXPECT_EQ(search({3, 0, 0}), "nothing");
    EXPECT_THAT(searched, ElementsAre("clips", "clips/link"));
    withCorrectionFile("elsewhere/A001.olcf");
    EXPECT_EQ(search({3, 0, 0}), "clips/link/A001.olcf");
}

TEST_F(ClipFilePathBasedFinder, EndsDespiteLinksThatMakeALoop) {
    givenClip("a/A001.mov");
    folder.makeFolder("a/b");
    std::filesystem::create_directory_symlink("../../a", folder.path("a/b/loop"));
    std::filesystem::create_directory_symlink(".", folder.path("a/self"));
    EXPECT_EQ(search({255, 0, 0}), "nothing");
    EXPECT_THAT(searched, UnorderedElementsAre("a", "a/b", "a/b/loop", "a/self"));
}

TEST_F(ClipFilePathBasedFinder, PassesOverDeadLinksWhereItLooksForSubfolders) {
    givenClip("A001.mov");
    std::filesystem::create_symlink("missing", folder.path("dangling"));
    std::filesystem::create_symlink("loop", folder.path("loop"));
    EXPECT_EQ(search({2, 0, 0}), "nothing");
    EXPECT_THAT(searched, ElementsAre("."));
}

TEST_F(ClipFilePathBasedFinder, HandlesNamesOfAnyBytes) {
    const std::string name = "A\n\xff\xfe \"1\" " + std::string(200, 'x');
    givenClip(name + ".mov");
    withFile("sub\n\xff/" + name + ".olcf", textFor("other.mov", "other"));
    EXPECT_EQ(search({1, 0, 0}), "nothing");
    EXPECT_THAT(searched, ElementsAre(".", "sub\n\xff"));
    // A header line cannot hold a line feed, so such a clip is matched by no header; any other byte is.
    givenClip("\xff\xfe.mov").withCorrectionFile("sub\n\xff/\xff\xfe.olcf");
    EXPECT_EQ(search({1, 0, 0}), "sub\n\xff/\xff\xfe.olcf");
}

TEST_F(ClipFilePathBasedFinder, NamesTheClipFolderIfItIsMissingAndNothingIsFound) {
    clip = "missing/A001.mov";
    EXPECT_EQ(search(nowhereElse), "No such file or directory: missing");
    EXPECT_EQ(search({1, 1, 2}), "No such file or directory: missing");
}

TEST_F(ClipFilePathBasedFinder, SearchesAroundAClipFolderThatIsMissing) {
    clip = "missing/A001.mov";
    withCorrectionFile("A001.olcf");
    EXPECT_EQ(search({1, 1, 2}), "A001.olcf");
}

TEST_F(ClipFilePathBasedFinder, NamesAFolderThatCannotBeListedIfNothingIsFound) {
    givenClip("A001.mov");
    folder.makeFolder("locked");
    chmod(folder.path("locked").c_str(), 0);
    for (const LevelOfDepth depths : {LevelOfDepth{1, 0, 0}, LevelOfDepth{2, 0, 0}}) {
        EXPECT_EQ(Support::asOrdinaryUser([&] { return search(depths); }), "Permission denied: locked")
            << int(depths.subdirectoryDepth);
    }
    chmod(folder.path("locked").c_str(), 0755);
}

TEST_F(ClipFilePathBasedFinder, NamesTheFirstOfTheFoldersThatCannotBeListed) {
    givenClip("a/b/A001.mov");
    for (const char* const name : {"a/b/locked", "a/locked", "locked"}) {
        chmod(folder.makeFolder(name).c_str(), 0);
    }
    EXPECT_EQ(Support::asOrdinaryUser([&] { return search({1, 2, 1}); }), "Permission denied: a/b/locked");
    for (const char* const name : {"a/b/locked", "a/locked", "locked"}) chmod(folder.path(name).c_str(), 0755);
}

TEST_F(ClipFilePathBasedFinder, FindsAFileBeyondAFolderThatCannotBeListed) {
    givenClip("shot/A001.mov").withCorrectionFile("lens/A001.olcf");
    for (const char* const name : {"shot/locked", "locked"}) chmod(folder.makeFolder(name).c_str(), 0);
    EXPECT_EQ(Support::asOrdinaryUser([&] { return search({2, 1, 2}); }), "lens/A001.olcf");
    for (const char* const name : {"shot/locked", "locked"}) chmod(folder.path(name).c_str(), 0755);
}

TEST_F(ClipFilePathBasedFinder, FindsAFileAboveAClipFolderThatMayBeEnteredButNotListed) {
    givenClip("shot/A001.mov").withCorrectionFile("A001.olcf");
    chmod(folder.path("shot").c_str(), 0711);
    EXPECT_EQ(Support::asOrdinaryUser([&] { return search({1, 1, 2}); }), "A001.olcf");
    chmod(folder.path("shot").c_str(), 0755);
}

TEST_F(ClipFilePathBasedFinder, OutlivesProcessesWhoseFoldersItSearches) {
    const auto handler = std::signal(SIGCHLD, SIG_IGN); // a child's folder is gone as soon as it ends
    for (int round = 0; round < 30; ++round) {
        for (useconds_t child = 0; child < 20; ++child) {
            if (fork() != 0) continue;
            usleep(child * 500);
            _exit(0);
        }
        std::string found;
        EXPECT_THROW(CorrectionFile::ClipFilePathBasedFinder("/proc/A001.mov", {1, 0, 0}).find(found),
                     CorrectionFile::NotFoundException);
    }
    while (wait(nullptr) > 0) {
    }
    std::signal(SIGCHLD, handler);
}

TEST_F(ClipFilePathBasedFinder, IsUsableThroughTheFinderInterface) {
    givenClip("A001.mov").withCorrectionFile("A001.olcf");
    const std::unique_ptr<CorrectionFile::Finder> finder =
        std::make_unique<CorrectionFile::ClipFilePathBasedFinder>(folder.path(clip), nowhereElse);
    std::string found;
    finder->find(found);
    EXPECT_EQ(found, folder.path("A001.olcf"));
}

TEST(ClipFilePathBasedFinderDeathTest, StopsOnAnEmptyPath) {
    EXPECT_DEATH(CorrectionFile::ClipFilePathBasedFinder("", nowhereElse),
                 "Assertion failed: clipFilePath.has_filename\\(\\)\n");
}
