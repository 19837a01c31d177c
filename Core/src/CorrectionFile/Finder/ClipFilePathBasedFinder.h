#pragma once

#include <string>

#include "CorrectionFile/Finder/Finder.h"
#include "CorrectionFile/Finder/LevelOfDepth.h"

namespace CorrectionFile {

/// Finds a clip's correction file near the clip.
///
/// Searches, in this order: the clip's folder; its subfolders; then, for each ancestor from the nearest, the ancestor
/// and its subfolders without the branch already searched. Candidates in a folder are the *.olcf files whose name
/// contains the clip's name without its extension; the first one whose header names the clip is taken. Within a folder,
/// the order is the file system's.
///
/// Folders whose name begins with "." are skipped. A link to a folder is searched like a folder, but its subfolders are
/// not, so links cannot form a loop.
///
/// Ancestors are those of the path as written, so pass an absolute path. A bare file name is searched for in the
/// current folder and below. Any thread may use it.
class ClipFilePathBasedFinder : public Finder {
public:
    /// The path must not be empty. Nothing is searched yet.
    ClipFilePathBasedFinder(const std::string& clipFilePath, LevelOfDepth levelOfDepth);

    /// Stores the found file's path, built from the searched folder and the file's name.
    ///
    /// Skips candidates that cannot be read or parsed, and candidates and folders that disappear during the search. A
    /// folder that cannot be listed is skipped too: a file found elsewhere is taken. If nothing is found, throws
    /// boost::filesystem::filesystem_error with the first such folder as its path1() or, when there is none,
    /// NotFoundException with the searched folders. A missing clip folder counts as a folder that cannot be listed.
    /// Throws std::bad_alloc when memory runs out. The text is untouched on failure.
    void find(std::string& correctionFilePath) const override;

private:
    std::string m_clipFilePath;
    LevelOfDepth m_levelOfDepth;
};

} // namespace CorrectionFile
