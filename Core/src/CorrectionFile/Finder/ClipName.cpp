#include "CorrectionFile/Finder/ClipName.h"

#include <boost/filesystem/path.hpp>

namespace CorrectionFile {

namespace fs = boost::filesystem;

ClipName::ClipName(const std::string& clipFilePath)
    : m_file(fs::path(clipFilePath).filename().string()), m_stem(fs::path(clipFilePath).stem().string()) {}

bool ClipName::isIn(const std::string& correctionFileName) const {
    return fs::path(correctionFileName).extension().string() == ".olcf" &&
           correctionFileName.find(m_stem) != std::string::npos;
}

} // namespace CorrectionFile
