#include "CorrectionFile/Reader/Reader.h"

#include <cstdint>
#include <utility>

#include "Exception/DetailLines.h"
#include "System/RegularFile.h"

namespace CorrectionFile {

namespace {

constexpr std::int64_t largestFileSize = std::int64_t{1} << 30;

} // namespace

void Reader::readFile(const std::string& path, std::string& text) const {
    System::RegularFile file = System::RegularFile::toRead(path);
    if (!file.isOpen() || file.size() > largestFileSize) throw NotReadableException(path);
    std::string content(static_cast<std::size_t>(file.size()), '\0');
    if (!file.read(content)) throw NotReadableException(path);
    text = std::move(content);
}

NotReadableException::NotReadableException(const std::string& filePath)
    : Exception("Correction file could not be read.", DetailLines().text("File Path", filePath).string()) {}

} // namespace CorrectionFile
