#include "OutputFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

#include "ImageError.h"

namespace Image {

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
    throw ImageError(m_path, "cannot be written: " + std::generic_category().message(errno) +
                                 (errno == ENOSPC ? "; free space or choose another folder" : ""));
}

} // namespace Image
