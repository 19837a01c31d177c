#include "System/AtomicFile.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <system_error>
#include <vector>

#include "Report/Failure.h"

namespace Tools {
namespace {

namespace fs = std::filesystem;

// Paths that a signal handler has to remove. A slot goes Free -> Reserved (its owner writes the path) -> Active ->
// Free. The handler takes Active slots for good, so that no path is read while it is being written.
enum SlotState : int { Free, Reserved, Active, Taken };
struct Slot {
    std::atomic<int> state{Free};
    std::array<char, 4096> path{};
};
/// More threads than any job has.
constexpr int slotCount = 1024;
constinit std::array<Slot, slotCount> slots{};
static_assert(std::atomic<int>::is_always_lock_free);

// Whoever makes a file counts itself before it looks whether it still may, and the handler forbids it before it looks
// at the count: so each file is either made in time to be removed, or not at all.
constinit std::atomic<int> makers{0};
constinit std::atomic<bool> isRemoving{false};
constexpr int patience = 1000; ///< ms, for an open that a network file system does not answer

int reserveSlot(const std::string& path) {
    if (path.size() >= slots[0].path.size()) return -1;
    for (int index = 0; index < slotCount; ++index) {
        Slot& slot = slots[static_cast<std::size_t>(index)];
        int expected = Free;
        if (!slot.state.compare_exchange_strong(expected, Reserved)) continue;
        std::memcpy(slot.path.data(), path.c_str(), path.size() + 1);
        slot.state = Active;
        return index;
    }
    return -1;
}

void freeSlot(int index) {
    if (index < 0) return;
    int expected = Active;
    slots[static_cast<std::size_t>(index)].state.compare_exchange_strong(expected, Free);
}

/// Makes an empty file; 0 or the error.
int makeFile(const std::string& path) {
    // The handler, run by this very thread, would wait for it.
    sigset_t all, before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    ++makers;
    int error = ECANCELED;
    if (!isRemoving) {
        const int descriptor = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
        error = descriptor < 0 ? errno : 0;
        if (descriptor >= 0) close(descriptor);
    }
    --makers;
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    return error;
}

[[noreturn]] void fail(const std::string& what, int error) {
    throw Failure(Failure::Kind::Output, fmt::format("{}: {}.", what, std::generic_category().message(error)));
}

std::string hostName() {
    std::array<char, 65> name{};
    if (gethostname(name.data(), name.size() - 1) != 0 || name[0] == '\0') return "host";
    return name.data();
}

/// NAME_MAX of every common file system.
constexpr std::size_t maximumNameLength = 255;

std::string temporaryName(const std::string& name) {
    const std::size_t dot = name.find_last_of('.');
    const bool hasExtension = dot != std::string::npos && dot > 0;
    const std::string end =
        fmt::format(".{}.{}.tmp{}", hostName(), getpid(), hasExtension ? name.substr(dot) : std::string());
    std::string stem = hasExtension ? name.substr(0, dot) : name;
    // Two long names of one folder that differ only in what is cut off are told apart by their hash.
    if (1 + stem.size() + end.size() > maximumNameLength) {
        const std::string hash = fmt::format("{:016x}", std::hash<std::string>()(stem));
        const std::size_t room = maximumNameLength - std::min(maximumNameLength, 1 + end.size() + hash.size());
        stem = stem.substr(0, room) + hash;
    }
    return '.' + stem + end;
}

/// Flushes a file or a folder to the disk; 0 or the error. File systems that cannot flush a folder say EINVAL.
int flush(const std::string& path, int flags) {
    const int descriptor = open(path.c_str(), flags | O_CLOEXEC);
    if (descriptor < 0) return errno;
    const int error = fsync(descriptor) == 0 ? 0 : errno;
    close(descriptor);
    return error == EINVAL || error == ENOTSUP ? 0 : error;
}

/// The folder of a file, which is made if it is missing.
std::string madeFolderOf(const std::string& path) {
    const fs::path parent = fs::path(path).parent_path();
    const std::string folder = parent.empty() ? "." : parent.string();
    std::error_code error;
    fs::create_directories(folder, error);
    std::error_code unknown;
    if (!fs::is_directory(folder, unknown))
        fail(fmt::format("Folder \"{}\" could not be created", folder), error ? error.value() : ENOTDIR);
    return folder;
}

} // namespace

void AtomicFile::checkFolderOf(const std::string& path) {
    const std::string folder = madeFolderOf(path);
    if (faccessat(AT_FDCWD, folder.c_str(), W_OK | X_OK, AT_EACCESS) != 0)
        fail(fmt::format("Folder \"{}\" cannot be written", folder), errno);
}

AtomicFile::AtomicFile(const std::string& path) : m_path(path), m_slot(-1) {
    const fs::path target(path);
    m_folder = madeFolderOf(path);
    std::error_code error;
    if (fs::is_directory(target, error)) {
        throw Failure(Failure::Kind::Output, fmt::format("\"{}\" is a folder; name a file to write.", path));
    }
    m_temporaryPath = (target.parent_path() / temporaryName(target.filename().string())).string();
    m_slot = reserveSlot(m_temporaryPath);
    if (const int failed = makeFile(m_temporaryPath)) {
        freeSlot(m_slot);
        fail(fmt::format("\"{}\" could not be written", path), failed);
    }
}

AtomicFile::~AtomicFile() {
    if (!m_isCommitted) unlink(m_temporaryPath.c_str());
    freeSlot(m_slot);
}

void AtomicFile::commit() {
    const std::string what = fmt::format("\"{}\" could not be written", m_path);
    struct stat status = {};
    if (stat(m_temporaryPath.c_str(), &status) == 0 && status.st_size == 0) fail(what, ENODATA);
    if (const int error = flush(m_temporaryPath, O_RDONLY)) fail(what, error);
    if (rename(m_temporaryPath.c_str(), m_path.c_str()) != 0) fail(what, errno);
    m_isCommitted = true;
    if (const int error = flush(m_folder, O_RDONLY | O_DIRECTORY)) fail(what, error);
}

void AtomicFile::removeAllNow() noexcept {
    isRemoving = true;
    for (int waited = 0; makers > 0 && waited < patience; ++waited) {
        constexpr timespec millisecond = {0, 1'000'000};
        nanosleep(&millisecond, nullptr);
    }
    for (Slot& slot : slots) {
        int state = Active;
        // Taken: by a handler on another thread, which may come to removing the file too late.
        if (slot.state.compare_exchange_strong(state, Taken) || state == Taken) unlink(slot.path.data());
    }
}

void AtomicFile::removeAbandoned(const std::string& folder) {
    const std::string marker = '.' + hostName() + '.';
    std::error_code error;
    std::vector<fs::path> abandoned;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
        const std::string name = entry->path().filename().string();
        const std::size_t tmp = name.rfind(".tmp");
        if (name.front() != '.' || tmp == std::string::npos) continue;
        const std::size_t host = name.rfind(marker, tmp);
        if (host == std::string::npos) continue;
        pid_t process = 0;
        const char* const digits = name.data() + host + marker.size();
        const auto [after, failed] = std::from_chars(digits, name.data() + tmp, process);
        if (failed != std::errc() || after != name.data() + tmp || process <= 0) continue;
        struct stat status = {};
        if (lstat(entry->path().c_str(), &status) != 0 || !S_ISREG(status.st_mode)) continue;
        const bool isOld = std::time(nullptr) - status.st_mtime > 3600;
        if (isOld && kill(process, 0) != 0 && errno == ESRCH) abandoned.push_back(entry->path());
    }
    for (const fs::path& path : abandoned) fs::remove(path, error);
}

void writeTextFile(const std::string& path, const std::string& text) {
    AtomicFile file(path);
    std::ofstream stream(file.temporaryPath(), std::ios::binary | std::ios::in);
    stream << text;
    stream.close();
    if (!stream) throw Failure(Failure::Kind::Output, fmt::format("{}: could not be written; is the disk full?", path));
    file.commit();
}

void refuseToReplace(const std::string& input, const std::string& output) {
    std::error_code error;
    if (!std::filesystem::equivalent(input, output, error)) return;
    refuse(fmt::format("The output would replace its own input, \"{}\"; choose another output.", output));
}

} // namespace Tools
