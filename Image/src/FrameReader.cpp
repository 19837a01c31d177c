#include "FrameReader.h"

#include <array>

#include "Exr/ExrReader.h"
#include "Files.h"
#include "ImageModule.h"

namespace Image {

namespace {

constexpr std::array<const char*, 6> movieExtensions{"mov", "mp4", "m4v", "mxf", "mkv", "avi"};

bool hasExrContent(const std::string& path) { return isExr(InputFile(path)); }

OpenModuleReader moduleReader(const std::string& path) {
    const char* const module = isMovie(path) ? "MovieModule" : "StillsModule";
    return reinterpret_cast<OpenModuleReader>(moduleFunction(path, module, "orvexOpenReader"));
}

} // namespace

bool isMovie(const std::string& path) {
    const std::string extension = fileExtension(path);
    for (const char* const movie : movieExtensions)
        if (extension == movie) return true;
    return false;
}

std::unique_ptr<FrameReader> openReader(const std::string& path, const Limits& limits) {
    if (fileExtension(path) == "exr" || hasExrContent(path)) return std::make_unique<ExrReader>(path, limits);
    return std::unique_ptr<FrameReader>(moduleReader(path)(path, limits));
}

void loadReaderModule(const std::string& path) {
    if (fileExtension(path) == "exr") return;
    try {
        moduleReader(path);
    } catch (const ImageError&) {
        // Whoever opens a file is told.
    }
}

} // namespace Image
