#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <tuple>

#include "Clip/FilePattern.h"

namespace Tools {

/// Which frames of an output sequence are finished, and from what they were made, so that a stopped job can be resumed.
///
/// That a file exists, or that its header opens, proves neither that it is whole nor that it was made from the present
/// inputs with the present options. So each finished frame leaves a line in a hidden text file beside the sequence:
///
///     .<pattern's name>.<host>.frames:    <size> <time of change, ns> <key> <file name>
///
/// appended after the frame got its final name. Size and time tell whether the file is still the one that was written;
/// the key is the fingerprint of all that the frame was made from. A frame whose line is missing or does not agree is
/// made again, so losing lines costs time only. A list works for every file format, which a mark inside the files would
/// not (DPX has no room for one); one list per machine, because appending over the network is not atomic between
/// machines; all lists of a sequence are read.
///
/// `add` may be called by several threads.
class FinishedFrames {
public:
    /// Reads the lists of the sequence; unreadable ones and lines that are not understood count as missing.
    explicit FinishedFrames(const FilePattern& output);

    enum class State {
        Missing,  ///< there is no such file
        Finished, ///< under this key, and untouched since
        Outdated, ///< finished under another key, and untouched since
        Unknown,  ///< changed since it was finished, or from elsewhere
    };

    /// What the file at `path` is to a frame with this key.
    State stateOf(const std::string& path, const std::string& key) const;

    /// Notes that the file at `path` was finished under this key. Throws Failure (Output) if the list cannot be
    /// written.
    void add(const std::string& path, const std::string& key);

    /// 16 hexadecimal digits that stand for a text of any length.
    static std::string fingerprint(const std::string& text);

    /// What tells a version of an input file from another: its path, size and time of change; "missing" without a file.
    /// Reading whole plates for this would cost as much as decoding them.
    static std::string identity(const std::string& path);

private:
    using Line = std::tuple<std::uint64_t, std::int64_t, std::string, std::string>; ///< size, time, key, name

    std::string m_listPath;
    std::set<Line> m_lines;
    std::mutex m_mutex; ///< guards the list's file
    bool m_isOpen = false;
};

} // namespace Tools
