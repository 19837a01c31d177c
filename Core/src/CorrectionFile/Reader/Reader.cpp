#include "CorrectionFile/Reader/Reader.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "Exception/DetailLines.h"

namespace CorrectionFile {

namespace {

constexpr off_t largestFileSize = off_t(1) << 30;

class FileDescriptor {
public:
    explicit FileDescriptor(int descriptor) : m_descriptor(descriptor) {}
    ~FileDescriptor() {
        if (m_descriptor >= 0) ::close(m_descriptor);
    }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;

    int get() const { return m_descriptor; }

private:
    int m_descriptor;
};

bool isRegularFile(const struct stat& status) { return S_ISREG(status.st_mode); }

// Reads exactly as many bytes as the text is long.
bool fill(std::string& text, int descriptor) {
    std::size_t filled = 0;
    while (filled < text.size()) {
        const ssize_t count = ::read(descriptor, text.data() + filled, text.size() - filled);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return false;
        filled += static_cast<std::size_t>(count);
    }
    return true;
}

} // namespace

void Reader::readFile(const std::string& path, std::string& text) const {
    // A path that holds a zero byte would be opened under a shorter name.
    if (path.find('\0') != std::string::npos) throw NotReadableException(path);

    // Looked at before it is opened, because opening alone can act on a device; looked at again once open, because the
    // name may stand for another file by then. O_NONBLOCK: opening a pipe without a writer would wait for ever.
    struct stat status = {};
    if (::stat(path.c_str(), &status) != 0 || !isRegularFile(status)) throw NotReadableException(path);
    const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    if (file.get() < 0 || ::fstat(file.get(), &status) != 0 || !isRegularFile(status) ||
        status.st_size > largestFileSize) {
        throw NotReadableException(path);
    }

    std::string content(static_cast<std::size_t>(status.st_size), '\0');
    if (!fill(content, file.get())) throw NotReadableException(path);
    text = std::move(content);
}

NotReadableException::NotReadableException(const std::string& filePath)
    : Exception("Correction file could not be read.", DetailLines().text("File Path", filePath).string()) {}

} // namespace CorrectionFile
