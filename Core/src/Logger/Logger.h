#pragma once

#include <chrono>
#include <string>

namespace Core {

/// Appends time-stamped messages to one text file: no levels, no rotation, no limit. Holds no file open between calls.
/// Takes no lock; any thread may log, since every call writes its entry as a whole.
class Logger {
public:
    /// Stores the path; the file is not touched.
    explicit Logger(const std::string& filePath);

    /// Appends one entry, `2020-07-31 14:05:09.004211: MESSAGE` and a line feed. A message that ends in a line feed of
    /// its own is therefore followed by an empty line. If the file cannot be written, the entry is silently lost.
    void log(const std::string& message) const;

    /// The text of an entry logged at `time`, without the line feed: local time with microseconds, ": " and the
    /// message.
    static std::string entryText(std::chrono::system_clock::time_point time, const std::string& message);

private:
    std::string m_filePath;
};

} // namespace Core
