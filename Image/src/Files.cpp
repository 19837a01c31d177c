#include "Files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

#include "ImageError.h"
#include "Text/lowerCase.h"

namespace Image {

namespace {
std::string errnoText() { return std::generic_category().message(errno); }
} // namespace

std::string fileExtension(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    const std::size_t dot = path.rfind('.');
    if (dot == std::string::npos || (slash != std::string::npos && dot < slash)) return {};
    return Text::lowerCase(path.substr(dot + 1));
}

InputFile::InputFile(const std::string& path) : m_path(path) {
    // Without waiting: opening a FIFO would otherwise block for ever.
    m_descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (m_descriptor < 0) throw ImageError(path, "cannot be opened: " + errnoText());
    struct stat status {};
    std::string problem;
    if (::fstat(m_descriptor, &status) != 0)
        problem = "cannot be opened: " + errnoText();
    else if (!S_ISREG(status.st_mode))
        problem = "is not a file";
    else if (status.st_size == 0)
        problem = "is empty; copy or render it again";
    if (!problem.empty()) {
        ::close(m_descriptor);
        throw ImageError(path, problem);
    }
    m_size = static_cast<std::uint64_t>(status.st_size);
}

InputFile::~InputFile() { ::close(m_descriptor); }

std::size_t InputFile::read(void* bytes, std::size_t n, std::uint64_t offset) const {
    std::size_t done = 0;
    while (done < n) {
        const ssize_t count =
            ::pread(m_descriptor, static_cast<char*>(bytes) + done, n - done, static_cast<off_t>(offset + done));
        if (count == 0) break;
        if (count < 0) {
            if (errno == EINTR) continue;
            throw ImageError(m_path, "cannot be read: " + errnoText());
        }
        done += static_cast<std::size_t>(count);
    }
    return done;
}

OutputFile::OutputFile(const std::string& path, bool makesFile) : m_path(path) {
    m_descriptor = ::open(path.c_str(), O_WRONLY | O_TRUNC | O_CLOEXEC | (makesFile ? O_CREAT : 0), 0666);
    if (m_descriptor < 0) fail();
    struct stat status {};
    // A device (/dev/full) is not ours to remove.
    m_regular = ::fstat(m_descriptor, &status) == 0 && S_ISREG(status.st_mode);
}

OutputFile::~OutputFile() {
    if (m_descriptor < 0) return;
    ::close(m_descriptor);
    if (m_regular) ::unlink(m_path.c_str());
}

void OutputFile::write(const void* bytes, std::size_t n, std::uint64_t offset) {
    std::size_t done = 0;
    while (done < n) {
        const ssize_t count =
            ::pwrite(m_descriptor, static_cast<const char*>(bytes) + done, n - done, static_cast<off_t>(offset + done));
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) fail();
        done += static_cast<std::size_t>(count);
    }
}

void OutputFile::close() {
    // Some file systems report a failed write only here.
    const int descriptor = m_descriptor;
    m_descriptor = -1;
    if (::close(descriptor) == 0) return;
    const int error = errno;
    if (m_regular) ::unlink(m_path.c_str());
    errno = error;
    fail();
}

void OutputFile::fail() {
    throw ImageError(
        m_path, "cannot be written: " + errnoText() + (errno == ENOSPC ? "; free space or choose another folder" : ""));
}

} // namespace Image
