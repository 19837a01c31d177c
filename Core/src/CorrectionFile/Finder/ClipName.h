#pragma once

#include <string>

namespace CorrectionFile {

/// A clip's name as correction files refer to it. Any thread may use it.
class ClipName {
public:
    explicit ClipName(const std::string& clipFilePath);

    /// The clip's file name: what a header must name.
    const std::string& file() const { return m_file; }

    /// The file name without its extension: what a correction file's own name must contain.
    const std::string& stem() const { return m_stem; }

    /// Whether the clip's correction file may have this name: *.olcf in lower case, containing the stem.
    bool isIn(const std::string& correctionFileName) const;

private:
    std::string m_file;
    std::string m_stem;
};

} // namespace CorrectionFile
