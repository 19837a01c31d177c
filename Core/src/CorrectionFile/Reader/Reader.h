#pragma once

#include <string>

#include "Exception/Exception.h"

namespace CorrectionFile {

/// A correction file could not be opened or read as a whole.
class NotReadableException : public Exception {
public:
    /// Details: `File Path: "/clips/A001.olcf"`.
    explicit NotReadableException(const std::string& filePath);
};

/// Reads a correction file's bytes as they are, without decoding. Stateless; any thread may use it.
class Reader {
public:
    /// Reads the whole file into the text.
    ///
    /// Throws NotReadableException if the path names no regular file (a directory, a pipe or a device is refused
    /// without waiting for it), if it cannot be opened, if it is larger than 1 GiB, or if it delivers fewer bytes than
    /// its size; the text is untouched then.
    void readFile(const std::string& path, std::string& text) const;
};

} // namespace CorrectionFile
