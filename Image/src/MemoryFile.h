#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace Image {

/// A file in memory, not on a disk, for libraries that read or write files only by name. It is gone with the object.
/// One thread at a time.
class MemoryFile {
public:
    /// Empty. Throws std::bad_alloc if the system provides none.
    MemoryFile();
    /// One that another process has made; takes the descriptor over.
    explicit MemoryFile(int descriptor) : m_descriptor(descriptor) {}
    ~MemoryFile();
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;

    /// A name under which this process can open it; another process cannot.
    std::string path() const;
    /// For a process that is to share it.
    int descriptor() const { return m_descriptor; }
    /// Writes as many bytes at that offset. Throws std::bad_alloc if the system grants no memory.
    void write(const void* from, std::size_t n, std::uint64_t offset);
    /// Zeros where it grows. Throws std::bad_alloc.
    void resize(std::size_t size);
    /// Its bytes as they are now, without a copy: valid until the next call or the object's end, and only as long as
    /// the file is not truncated. Throws std::bad_alloc.
    std::uint8_t* bytes();
    std::size_t size() const;

private:
    void unmap();

    int m_descriptor = -1;
    std::uint8_t* m_mapped = nullptr;
    std::size_t m_mappedSize = 0;
};

} // namespace Image
