#pragma once

#include <cstdint>
#include <string>

/// The few calls that the core makes to the operating system itself, for POSIX and for Windows.
namespace System {

/// A regular file, open until the object's end. Folders, pipes and devices are refused: opening one may wait, or act.
class RegularFile {
public:
    /// Opens an existing file for reading; a link stands for its target.
    static RegularFile toRead(const std::string& path);

    /// Opens a file for appending. Creates it if it is missing, with the permissions that the user's mask leaves; a
    /// link is refused.
    static RegularFile toAppend(const std::string& path);

    ~RegularFile();
    RegularFile(const RegularFile&) = delete;
    RegularFile& operator=(const RegularFile&) = delete;

    /// Whether it could be opened; nothing else may be called if not.
    bool isOpen() const { return m_descriptor >= 0; }

    /// In bytes, when it was opened.
    std::int64_t size() const { return m_size; }

    /// Reads on, as many bytes as the text is long. False if the file ends before, or an error occurs.
    bool read(std::string& text);

    /// Appends the text. False if an error occurs; a part of it may be written then.
    bool append(const std::string& text);

private:
    RegularFile(const std::string& path, int flags);

    int m_descriptor = -1;
    std::int64_t m_size = 0;
};

} // namespace System
