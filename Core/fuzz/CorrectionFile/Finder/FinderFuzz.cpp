// The search for a correction file in any tree of folders around a clip.
//
// The input is a script, a line per entry; paths lie under one folder, which the search can climb out of by one level:
//
//     c 5/6/A001.mov      the clip (this one if not told otherwise)
//     d PATH              a folder
//     v PATH              a correction file of the clip
//     o PATH              a correction file of another clip
//     t PATH TEXT         a file of any text
//     l PATH TARGET       a link
//     p PATH              a pipe
//     x PATH              takes every permission from an entry

#include <sys/stat.h>
#include <unistd.h>

#include <boost/filesystem/exception.hpp>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <set>
#include <sstream>
#include <string>

#include "CorrectionFile/Finder/ClipFilePathBasedFinder.h"
#include "CorrectionFile/Finder/NotFoundException.h"
#include "Support/CorrectionFileText.h"
#include "Support/Require.h"
#include "Support/TemporaryFolder.h"
#include "Support/TextOfFile.h"

namespace {

namespace fs = std::filesystem;

/// Whether a path stays inside the folder it is appended to.
bool isInside(const std::string& path) {
    if (path.empty() || path.find('\0') != std::string::npos) return false;
    for (const fs::path& part : fs::path(path)) {
        if (part == ".." || part == "/") return false;
    }
    return true;
}

class Tree {
public:
    Tree() { fs::create_directories(m_root / "5/6"); }

    void add(const std::string& line) {
        std::istringstream words(line);
        char kind = 0;
        std::string path, rest;
        words >> kind >> path;
        std::getline(words >> std::ws, rest);
        if (!isInside(path)) return;
        const fs::path entry = m_root / path;
        std::error_code ignored;
        fs::create_directories(entry.parent_path(), ignored);
        switch (kind) {
            case 'c':
                if (entry.has_filename()) m_clip = entry;
                break;
            case 'd':
                fs::create_directory(entry, ignored);
                break;
            case 'v':
                write(entry, Support::CorrectionFileText().with("videoFileName", clipName()).string());
                break;
            case 'o':
                write(entry, Support::CorrectionFileText().with("videoFileName", "other.mov").string());
                break;
            case 't':
                write(entry, rest);
                break;
            case 'l':
                if (isInside(rest)) fs::create_symlink(rest, entry, ignored);
                break;
            case 'p':
                mkfifo(entry.c_str(), 0600);
                break;
            case 'x':
                chmod(entry.c_str(), 0);
                break;
            default:
                break;
        }
    }

    std::string clipPath() const { return m_clip.string(); }
    std::string clipName() const { return m_clip.filename().string(); }

private:
    static void write(const fs::path& path, const std::string& text) {
        // Opening a pipe for writing would wait for ever.
        if (!fs::exists(fs::symlink_status(path))) std::ofstream(path, std::ios::binary) << text;
    }

    const Support::TemporaryFolder m_folder;
    const fs::path m_root = fs::path(m_folder.path()) / "1/2/3/4";
    fs::path m_clip = m_root / "5/6/A001.mov";
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Tree tree;
    std::istringstream script(std::string(reinterpret_cast<const char*>(data), size));
    std::string line;
    for (int count = 0; count < 40 && std::getline(script, line); ++count) tree.add(line);

    std::string found = "untouched";
    try {
        CorrectionFile::ClipFilePathBasedFinder(tree.clipPath(), {1, 5, 2}).find(found);
        REQUIRE(fs::is_regular_file(found));
        REQUIRE(Support::textOfFile(found).find(tree.clipName()) != std::string::npos);
        REQUIRE(found.ends_with(".olcf"));
    } catch (const CorrectionFile::NotFoundException& exception) {
        REQUIRE(found == "untouched");
        REQUIRE(!exception.searchedDirectoryPaths().empty());
    } catch (const boost::filesystem::filesystem_error&) {
        REQUIRE(found == "untouched");
    }
    return 0;
}
