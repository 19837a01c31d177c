#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace Tools {

/// The name of a sequence's files with a place for the frame number, or the name of one file.
///
/// | Written         | Digits                                                                |
/// |-----------------|-----------------------------------------------------------------------|
/// | `%04d`, `%d`    | at least 4, as many as needed                                         |
/// | `#`             | at least 4                                                            |
/// | `##`, `####` …  | at least as many as there are signs, from two on                      |
/// | `@`, `@@@@` …   | at least as many as there are signs                                   |
/// | `$F4`, `$F`     | at least 4, as many as needed; accepted for input only                |
///
/// A number wider than its placeholder is written in full; a minus sign counts as a digit: -5 at `%04d` is -005. There
/// is at most one placeholder, in the file's name and not in a folder's. A value type.
class FilePattern {
public:
    enum class Use { Input, Output };

    /// Reads a path; throws Failure (WrongUse) for an empty path, a placeholder in a folder's name, two placeholders,
    /// or a notation that is not accepted for this use.
    static FilePattern parse(const std::string& path, Use use);

    /// One file without a placeholder, whatever characters its name has.
    static FilePattern singleFile(const std::string& path);

    /// `prefix` and `suffix` enclose the number in the file's name; `digits` 1 means as many as needed.
    static FilePattern sequence(const std::string& folder, const std::string& prefix, unsigned int digits,
                                const std::string& suffix);

    bool hasFrameNumber() const { return m_digits > 0; }

    /// The path of a frame's file; the same for every frame when there is no placeholder.
    std::string path(std::int32_t frame) const;

    /// The number in a file's name (without its folder), whatever its count of digits; none if the name does not match.
    std::optional<std::int32_t> frameNumber(const std::string& fileName) const;

    /// Folder as written, "." if none was.
    const std::string& folder() const { return m_folder; }

    /// What precedes the placeholder in the file's name; without one the whole name.
    const std::string& prefix() const { return m_prefix; }

    /// Path in the `%04d` notation.
    std::string string() const;

private:
    std::string m_directory; ///< as written, with its last "/"; empty if none
    std::string m_folder;
    std::string m_prefix;
    std::string m_suffix;
    unsigned int m_digits = 0; ///< 0: no placeholder
};

} // namespace Tools
