#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace Image {

/// A file being written from the start; removed again unless close() has succeeded.
class OutputFile {
public:
    /// Empties the file if there is one; else makes it, unless `makesFile` is false. Throws ImageError if that fails.
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
