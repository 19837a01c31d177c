#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace HostImage {

/// A file being written from the start; removed again unless close() has succeeded.
class OutputFile {
public:
    /// Throws ImageError if it cannot be created.
    explicit OutputFile(const std::string& path);
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

} // namespace HostImage
