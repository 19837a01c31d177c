#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace Image {

/// "exr" for "a/b.EXR"; "" for a name without one.
std::string fileExtension(const std::string& path);

/// An open regular file that may be read from several threads at once.
class InputFile {
public:
    /// Throws ImageError if it is missing, unreadable, empty, or not a regular file.
    explicit InputFile(const std::string& path);
    ~InputFile();
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;

    const std::string& path() const { return m_path; }
    std::uint64_t size() const { return m_size; }
    /// Reads up to n bytes from `offset`; fewer at the end of the file. Throws ImageError if the system reports an
    /// error.
    std::size_t read(void* bytes, std::size_t n, std::uint64_t offset) const;

private:
    std::string m_path;
    int m_descriptor = -1;
    std::uint64_t m_size = 0;
};

/// A file being written from the start; removed again unless close() has succeeded.
class OutputFile {
public:
    /// Truncates the file if it exists; otherwise creates it, unless `makesFile` is false. Throws ImageError if that
    /// fails.
    explicit OutputFile(const std::string& path, bool makesFile = true);
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    /// Throws ImageError, naming the cause (no space left, …).
    void write(const void* bytes, std::size_t n, std::uint64_t offset);
    void close();

private:
    [[noreturn]] void fail();

    std::string m_path;
    int m_descriptor = -1;
    bool m_regular = false;
};

} // namespace Image
