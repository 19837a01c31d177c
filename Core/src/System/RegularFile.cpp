#include "System/RegularFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>

namespace System {

namespace {

#ifdef _WIN32
// It has neither pipes nor terminals among its files, and descriptors are inherited only on request.
constexpr int commonFlags = O_BINARY | O_NOINHERIT;
constexpr int noLink = 0;
using Count = int;
#else
// O_NONBLOCK: opening a pipe whose other end nobody has opened would wait for ever.
constexpr int commonFlags = O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
constexpr int noLink = O_NOFOLLOW;
using Count = ssize_t;
#endif
constexpr int permissions = 0666; // less what the user's mask takes away
constexpr std::size_t mostAtOnce = std::size_t{1} << 30;

bool isRegular(const struct stat& status) { return S_ISREG(status.st_mode); }

/// Has `transfer(offset, count)` move so many bytes, in as many calls as it takes.
template <typename Transfer>
bool transferAll(std::size_t size, const Transfer& transfer) {
    std::size_t done = 0;
    while (done < size) {
        const Count count = transfer(done, std::min(size - done, mostAtOnce));
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return false;
        done += static_cast<std::size_t>(count);
    }
    return true;
}

} // namespace

RegularFile RegularFile::toRead(const std::string& path) { return RegularFile(path, O_RDONLY); }

RegularFile RegularFile::toAppend(const std::string& path) {
    return RegularFile(path, O_WRONLY | O_APPEND | O_CREAT | noLink);
}

RegularFile::RegularFile(const std::string& path, int flags) {
    // A path that holds a zero byte would be opened under a shorter name.
    if (path.find('\0') != std::string::npos) return;
    // Looked at before it is opened, because opening alone can act on a device; looked at again once open, because the
    // name may stand for another file by then.
    struct stat status = {};
    const bool exists = ::stat(path.c_str(), &status) == 0;
    if (exists ? !isRegular(status) : (flags & O_CREAT) == 0) return;
    m_descriptor = ::open(path.c_str(), flags | commonFlags, permissions);
    if (m_descriptor < 0) return;
    if (::fstat(m_descriptor, &status) == 0 && isRegular(status)) {
        m_size = status.st_size;
        return;
    }
    ::close(m_descriptor);
    m_descriptor = -1;
}

RegularFile::~RegularFile() {
    if (m_descriptor >= 0) ::close(m_descriptor);
}

bool RegularFile::read(std::string& text) {
    return transferAll(text.size(), [&](std::size_t offset, std::size_t count) -> Count {
        return ::read(m_descriptor, text.data() + offset, static_cast<unsigned int>(count));
    });
}

bool RegularFile::append(const std::string& text) {
    return transferAll(text.size(), [&](std::size_t offset, std::size_t count) -> Count {
        return ::write(m_descriptor, text.data() + offset, static_cast<unsigned int>(count));
    });
}

} // namespace System
