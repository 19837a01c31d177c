#include "CorrectionFile/Finder/ClipFilePathBasedFinder.h"

#include <boost/filesystem.hpp>
#include <deque>
#include <vector>

#include "CorrectionData/Content.h"
#include "CorrectionFile/Finder/ClipName.h"
#include "CorrectionFile/Finder/NotFoundException.h"
#include "CorrectionFile/Parser/Parser.h"
#include "CorrectionFile/Reader/Reader.h"
#include "Exception/Assert.h"

namespace CorrectionFile {

namespace {

namespace fs = boost::filesystem;

// One search around one clip; remembers the folders it has searched.
//
// A queue of folders is worked off at three moments: after the clip's folder is queued, after its subfolders are, and
// after each ancestor is queued with its subfolders. So a folder is listed for its subfolders only when everything
// nearer to the clip has been searched in vain. The branch that the climb came from is left out by its path; paths are
// compared as they are written, so a branch that is reached by a link as well may be searched again.
class Search {
public:
    explicit Search(const fs::path& clipFilePath)
        : m_clip(clipFilePath.string()), m_clipDirectory(clipFilePath.parent_path()) {}

    bool find(const LevelOfDepth& levelOfDepth, std::string& correctionFilePath) {
        const fs::path currentFolder = ".";
        m_queue.push_back(m_clipDirectory.empty() ? currentFolder : m_clipDirectory);
        const fs::path clipDirectory = m_queue.front();
        if (searchQueue(correctionFilePath)) return true;

        queueSubdirectories(clipDirectory, levelOfDepth.subdirectoryDepth, fs::path());
        if (searchQueue(correctionFilePath)) return true;

        fs::path previous = m_clipDirectory;
        for (int level = 0; level < levelOfDepth.parentDirectoryCount; ++level) {
            const fs::path ancestor = previous.parent_path();
            if (ancestor.empty()) return false;
            m_queue.push_back(ancestor);
            queueSubdirectories(ancestor, levelOfDepth.parentSubdirectoryDepth, previous);
            if (searchQueue(correctionFilePath)) return true;
            previous = ancestor;
        }
        return false;
    }

    const std::vector<std::string>& searchedDirectoryPaths() const { return m_searchedDirectoryPaths; }

private:
    // `excluded` is an entry of the directory, or empty.
    void queueSubdirectories(const fs::path& directory, int depth, const fs::path& excluded) {
        if (depth == 0) return;
        for (fs::recursive_directory_iterator entry(directory), end; entry != end; ++entry) {
            const bool isExcluded = entry.depth() == 0 && nameOf(entry->path()) == nameOf(excluded);
            const bool isWanted = isDirectory(*entry) && !isHidden(entry->path()) && !isExcluded;
            if (isWanted) m_queue.push_back(entry->path());
            // Folders at the last level need not be opened here: all they hold is too deep.
            if (!isWanted || entry.depth() + 1 >= depth) entry.disable_recursion_pending();
        }
    }

    bool searchQueue(std::string& correctionFilePath) {
        while (!m_queue.empty()) {
            const fs::path directory = m_queue.front();
            m_queue.pop_front();
            m_searchedDirectoryPaths.push_back(directory.string());
            if (searchDirectory(directory, correctionFilePath)) return true;
        }
        return false;
    }

    bool searchDirectory(const fs::path& directory, std::string& correctionFilePath) const {
        for (const fs::directory_entry& entry : fs::directory_iterator(directory)) {
            if (!isCandidate(entry) || !belongsToTheClip(entry.path())) continue;
            correctionFilePath = entry.path().string();
            return true;
        }
        return false;
    }

    bool isCandidate(const fs::directory_entry& entry) const {
        if (!m_clip.isIn(nameOf(entry.path()))) return false;
        boost::system::error_code ignored;
        return entry.status(ignored).type() == fs::regular_file;
    }

    bool belongsToTheClip(const fs::path& candidate) const {
        CorrectionData::Header header;
        try {
            std::string text;
            Reader().readFile(candidate.string(), text);
            Parser().parseHeader(text, header);
        } catch (const Exception&) {
            return false;
        }
        return CorrectionData::namesClip(header, m_clip.file());
    }

    // An entry that has vanished or that is a link to nothing is no folder.
    static bool isDirectory(const fs::directory_entry& entry) {
        boost::system::error_code ignored;
        return entry.status(ignored).type() == fs::directory_file;
    }

    static bool isHidden(const fs::path& path) { return nameOf(path).front() == '.'; }

    // As text: paths must not be compared themselves, since that allocates memory and ends the process when there is
    // none left.
    static std::string nameOf(const fs::path& path) { return path.filename().string(); }

    ClipName m_clip;
    fs::path m_clipDirectory;
    std::deque<fs::path> m_queue;
    std::vector<std::string> m_searchedDirectoryPaths;
};

} // namespace

ClipFilePathBasedFinder::ClipFilePathBasedFinder(const std::string& path, LevelOfDepth levelOfDepth)
    : m_clipFilePath(path), m_levelOfDepth(levelOfDepth) {
    const fs::path clipFilePath(path);
    ORVEX_ASSERT(clipFilePath.has_filename());
}

void ClipFilePathBasedFinder::find(std::string& correctionFilePath) const {
    Search search{fs::path(m_clipFilePath)};
    if (search.find(m_levelOfDepth, correctionFilePath)) return;
    throw NotFoundException(m_clipFilePath, search.searchedDirectoryPaths());
}

} // namespace CorrectionFile
