#include "InputFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

#include "ImageError.h"

namespace Image {

namespace {
std::string errnoText() { return std::generic_category().message(errno); }
} // namespace

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

} // namespace Image
