#include "Logger/LogEntry.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace Core {

namespace {

constexpr int closed = -1;

// O_NONBLOCK: opening a pipe that nobody reads would wait for ever.
constexpr int appendFlags = O_WRONLY | O_APPEND | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
constexpr mode_t permissions = 0666; // less what the user's mask takes away

int opened(const std::string& filePath) {
    if (filePath.find('\0') != std::string::npos) return closed;
    const int descriptor = ::open(filePath.c_str(), appendFlags, permissions);
    if (descriptor < 0) return closed;
    struct stat status = {};
    if (::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode)) return descriptor;
    ::close(descriptor);
    return closed;
}

} // namespace

LogEntry::LogEntry(const std::string& filePath) : m_descriptor(opened(filePath)) {}

LogEntry::~LogEntry() {
    if (m_descriptor != closed) ::close(m_descriptor);
}

void LogEntry::write(const std::string& text) {
    if (m_descriptor == closed) return;
    const std::string line = text + '\n';
    std::size_t written = 0;
    while (written < line.size()) {
        const ssize_t count = ::write(m_descriptor, line.data() + written, line.size() - written);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return;
        written += static_cast<std::size_t>(count);
    }
}

} // namespace Core
