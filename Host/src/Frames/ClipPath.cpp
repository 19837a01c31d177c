#include "Frames/ClipPath.h"

#include <filesystem>

namespace Host {

std::string clipFilePath(const FrameFiles& clip) {
    const std::filesystem::path file = std::filesystem::absolute(clip.files.begin()->second).lexically_normal();
    std::string extension = file.extension().string();
    for (char& character : extension) {
        if (character >= 'A' && character <= 'Z') character = static_cast<char>(character - 'A' + 'a');
    }
    if (extension != ".exr" && extension != ".dpx") return file.string();
    const std::string name = file.filename().string();
    return (file.parent_path() / name.substr(0, name.find('.'))).string();
}

} // namespace Host
