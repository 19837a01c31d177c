#include "CorrectionFile/Finder/ClipFilePathBasedFinder.h"

#include <algorithm>
#include <boost/filesystem.hpp>
#include <cerrno>
#include <deque>
#include <exception>
#include <new>
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

// Whether the error is that the folder is there no more: removed, replaced, or of a process that has ended.
bool isOfAVanishedFolder(const boost::system::error_code& error) {
    namespace errc = boost::system::errc;
#ifdef ESTALE // of network file systems; Windows has no such number
    if (error.value() == ESTALE) return true;
#endif
    return error == errc::no_such_file_or_directory || error == errc::not_a_directory || error == errc::no_such_process;
}

// One search around one clip; remembers the folders it has searched, and the first that it could not list.
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
        const fs::path clipDirectory = m_clipDirectory.empty() ? fs::path(".") : m_clipDirectory;
        // The folder that the caller names cannot have vanished while others were listed: it has to be there.
        m_queue.push_back(clipDirectory);
        if (searchQueue(correctionFilePath, Missing::IsAnError)) return true;

        queueSubdirectories(clipDirectory, levelOfDepth.subdirectoryDepth, "");
        if (searchQueue(correctionFilePath)) return true;

        fs::path previous = m_clipDirectory;
        for (int level = 0; level < levelOfDepth.parentDirectoryCount; ++level) {
            const fs::path ancestor = previous.parent_path();
            if (ancestor.empty()) return false;
            m_queue.push_back(ancestor);
            queueSubdirectories(ancestor, levelOfDepth.parentSubdirectoryDepth, nameOf(previous));
            if (searchQueue(correctionFilePath)) return true;
            previous = ancestor;
        }
        return false;
    }

    const std::vector<std::string>& searchedDirectoryPaths() const { return m_searchedDirectoryPaths; }

    /// Throws the first error of a folder that could not be listed, if there was one.
    void throwFirstErrorIfThereIsOne() const {
        if (m_firstError) std::rethrow_exception(m_firstError);
    }

private:
    enum class Missing { IsSkipped, IsAnError };

    // A folder comes before its own subfolders. An entry of the name `excluded` is left out; "" names none.
    void queueSubdirectories(const fs::path& directory, int depth, const std::string& excluded) {
        if (depth == 0) return;
        anyEntry(directory, Missing::IsSkipped, [&](const fs::directory_entry& entry) {
            const std::string name = nameOf(entry.path());
            if (name == excluded || name.front() == '.' || !isDirectory(entry)) return false;
            m_queue.push_back(entry.path());
            if (!isLink(entry)) queueSubdirectories(entry.path(), depth - 1, "");
            return false;
        });
    }

    bool searchQueue(std::string& correctionFilePath, Missing missing = Missing::IsSkipped) {
        while (!m_queue.empty()) {
            const fs::path directory = m_queue.front();
            m_queue.pop_front();
            m_searchedDirectoryPaths.push_back(directory.string());
            const bool isFound = anyEntry(directory, missing, [&](const fs::directory_entry& entry) {
                if (!isCandidate(entry) || !belongsToTheClip(entry.path())) return false;
                correctionFilePath = entry.path().string();
                return true;
            });
            if (isFound) return true;
        }
        return false;
    }

    // Hands the entries of a folder to the predicate until it answers true. An error of the file system ends the folder
    // and not the search: a folder that is locked hides no correction file in another one.
    template <typename Predicate>
    bool anyEntry(const fs::path& directory, Missing missing, const Predicate& predicate) {
        try {
            return std::any_of(fs::directory_iterator(directory), fs::directory_iterator(), predicate);
        } catch (const fs::filesystem_error& error) {
            if (error.code() == boost::system::errc::not_enough_memory) throw std::bad_alloc(); // no folder's fault
            const bool isSkipped = missing == Missing::IsSkipped && isOfAVanishedFolder(error.code());
            if (!isSkipped && !m_firstError) m_firstError = std::current_exception();
            return false;
        }
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

    static bool isLink(const fs::directory_entry& entry) {
        boost::system::error_code ignored;
        return entry.symlink_status(ignored).type() == fs::symlink_file;
    }

    // As text: paths must not be compared themselves, since that allocates memory and ends the process when there is
    // none left.
    static std::string nameOf(const fs::path& path) { return path.filename().string(); }

    ClipName m_clip;
    fs::path m_clipDirectory;
    std::deque<fs::path> m_queue;
    std::vector<std::string> m_searchedDirectoryPaths;
    std::exception_ptr m_firstError;
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
    search.throwFirstErrorIfThereIsOne();
    throw NotFoundException(m_clipFilePath, search.searchedDirectoryPaths());
}

} // namespace CorrectionFile
