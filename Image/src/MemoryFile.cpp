#include "MemoryFile.h"

#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <new>

namespace Image {

MemoryFile::MemoryFile() : m_descriptor(::memfd_create("lenscorrect", MFD_CLOEXEC)) {
    if (m_descriptor < 0) throw std::bad_alloc();
}

MemoryFile::~MemoryFile() {
    unmap();
    ::close(m_descriptor);
}

std::string MemoryFile::path() const { return "/proc/self/fd/" + std::to_string(m_descriptor); }

void MemoryFile::write(const void* from, std::size_t n, std::uint64_t offset) {
    std::size_t done = 0;
    while (done < n) {
        const ssize_t count = ::pwrite(m_descriptor, static_cast<const std::uint8_t*>(from) + done, n - done,
                                       static_cast<off_t>(offset + done));
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) throw std::bad_alloc();
        done += static_cast<std::size_t>(count);
    }
}

void MemoryFile::resize(std::size_t size) {
    if (::ftruncate(m_descriptor, static_cast<off_t>(size)) != 0) throw std::bad_alloc();
}

std::uint8_t* MemoryFile::bytes() {
    unmap();
    const std::size_t wanted = size();
    if (wanted == 0) return nullptr;
    void* const mapped = ::mmap(nullptr, wanted, PROT_READ | PROT_WRITE, MAP_SHARED, m_descriptor, 0);
    if (mapped == MAP_FAILED) throw std::bad_alloc();
    m_mapped = static_cast<std::uint8_t*>(mapped);
    m_mappedSize = wanted;
    return m_mapped;
}

std::size_t MemoryFile::size() const {
    struct stat status {};
    return ::fstat(m_descriptor, &status) == 0 ? static_cast<std::size_t>(status.st_size) : 0;
}

void MemoryFile::unmap() {
    if (m_mapped != nullptr) ::munmap(m_mapped, m_mappedSize);
    m_mapped = nullptr;
}

} // namespace Image
