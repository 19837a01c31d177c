#pragma once

#include <string>

namespace CorrectionFile {

/// Finds a clip's correction file.
class Finder {
public:
    virtual ~Finder() = default;

    /// Stores the path of the correction file. Throws NotFoundException, leaving it untouched, if there is none.
    virtual void find(std::string& correctionFilePath) const = 0;
};

} // namespace CorrectionFile
