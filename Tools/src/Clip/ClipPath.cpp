#include "Clip/ClipPath.h"

#include <filesystem>

#include "Files.h"
#include "FrameReader.h"

namespace Tools {
namespace {

namespace fs = std::filesystem;

fs::path firstFile(const FrameFiles& clip) { return fs::absolute(clip.files.begin()->second).lexically_normal(); }

bool hasPictures(const FrameFiles& clip) {
    const std::string& file = clip.files.begin()->second;
    return !Image::isMovie(file) && (clip.pattern.hasFrameNumber() || FrameFiles::isPicture(file));
}

/// Without frame number and extension; empty where nothing else is in the name.
std::string pictureClipName(const FrameFiles& clip) {
    const std::string fileName = firstFile(clip).filename().string();
    const std::string& prefix = clip.pattern.prefix();
    std::string name = prefix.substr(0, prefix.find('.'));
    const bool isSeparatedFromNumber = name.size() == prefix.size() && (name.ends_with('_') || name.ends_with('-'));
    if (clip.pattern.hasFrameNumber() && isSeparatedFromNumber) name.pop_back();
    return name.empty() ? fileName.substr(0, fileName.find('.')) : name;
}

} // namespace

std::string clipFilePath(const FrameFiles& clip) {
    const fs::path file = firstFile(clip);
    return hasPictures(clip) ? (file.parent_path() / pictureClipName(clip)).string() : file.string();
}

std::string shownClipPath(const FrameFiles& clip) {
    if (!hasPictures(clip)) return clipFilePath(clip);
    const bool isDpx = Image::fileExtension(clip.files.begin()->second) == "dpx";
    return clipFilePath(clip) + (isDpx ? ".dpx" : ".exr");
}

} // namespace Tools
