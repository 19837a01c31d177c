#pragma once

#include <string>

#include "System/RegularFile.h"

namespace Core {

/// A log file that is open for appending one entry. Never throws and never blocks on file errors: what cannot be
/// written is lost.
///
/// Log files have fixed names in a folder that every user may write to. So a symbolic link is not followed, and nothing
/// but a regular file is written to: a planted link or pipe can cost log entries, but never a file.
class LogEntry {
public:
    /// Opens the file for appending and creates it if it does not exist.
    explicit LogEntry(const std::string& filePath);

    /// Appends the text and a line feed. Both are written in one call, so entries of several threads or processes do
    /// not interleave.
    void write(const std::string& text);

private:
    System::RegularFile m_file;
};

} // namespace Core
