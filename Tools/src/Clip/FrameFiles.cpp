#include "Clip/FrameFiles.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <filesystem>
#include <set>
#include <tuple>
#include <vector>

#include "Files.h"
#include "FrameReader.h"
#include "Report/Failure.h"

namespace Tools {
namespace {

namespace fs = std::filesystem;

/// Names of the visible files of a folder, sorted, so that messages do not depend on the file system's order.
std::vector<std::string> fileNames(const std::string& folder) {
    std::vector<std::string> names;
    std::error_code error;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
        std::string name = entry->path().filename().string();
        std::error_code ignored;
        if (name.front() != '.' && entry->is_regular_file(ignored)) names.push_back(std::move(name));
    }
    if (error) refuse(fmt::format("Folder \"{}\" could not be listed: {}.", folder, error.message()));
    std::sort(names.begin(), names.end());
    return names;
}

/// A file's name around the digits that end its stem.
struct NumberedName {
    std::string prefix;
    std::string digits;
    std::string suffix;
};

/// The number in front of the extension; a sign counts only after ".", since "shot-10" is no negative frame.
NumberedName split(const std::string& name) {
    const std::size_t dot = name.find_last_of('.');
    const std::size_t stemEnd = dot == std::string::npos ? name.size() : dot;
    std::size_t begin = stemEnd;
    while (begin > 0 && name[begin - 1] >= '0' && name[begin - 1] <= '9') --begin;
    if (begin < stemEnd && begin > 1 && name[begin - 1] == '-' && name[begin - 2] == '.') --begin;
    return {name.substr(0, begin), name.substr(begin, stemEnd - begin), name.substr(stemEnd)};
}

void addFrames(FrameFiles& frames, const std::vector<std::string>& names) {
    const std::string example = frames.pattern.path(0);
    const std::string directory = example.substr(0, example.find_last_of('/') + 1);
    for (const std::string& name : names) {
        const std::optional<std::int32_t> frame = frames.pattern.frameNumber(name);
        if (!frame) continue;
        const auto [other, isNew] = frames.files.emplace(*frame, directory + name);
        if (!isNew) {
            refuse(fmt::format("Frame {} exists twice: \"{}\" and \"{}\". Move one of them away.", *frame,
                               other->second, directory + name));
        }
    }
}

FrameFiles inFolder(const std::string& folder) {
    const std::vector<std::string> names = fileNames(folder);
    std::map<std::tuple<std::string, std::string>, std::vector<std::string>> digitsOf;
    for (const std::string& name : names) {
        const NumberedName parts = split(name);
        if (!parts.digits.empty() && FrameFiles::isPicture(name)) {
            digitsOf[{parts.prefix, parts.suffix}].push_back(parts.digits);
        }
    }
    if (digitsOf.empty()) refuse(fmt::format("Folder \"{}\" contains no image sequence.", folder));
    std::vector<FilePattern> patterns;
    for (const auto& [key, digits] : digitsOf) {
        // The shortest number tells the padding, unless none is padded.
        const auto shortest = std::min_element(digits.begin(), digits.end(),
                                               [](const auto& a, const auto& b) { return a.size() < b.size(); });
        const bool padded = std::any_of(digits.begin(), digits.end(), [](const std::string& number) {
            return number.size() > 1 && number[number.front() == '-' ? 1 : 0] == '0';
        });
        const bool equal = std::all_of(digits.begin(), digits.end(),
                                       [&](const std::string& number) { return number.size() == shortest->size(); });
        const unsigned int width = padded || equal ? static_cast<unsigned int>(shortest->size()) : 1;
        patterns.push_back(FilePattern::sequence(folder, std::get<0>(key), width, std::get<1>(key)));
    }
    if (patterns.size() > 1) {
        std::string list;
        for (const FilePattern& pattern : patterns) list += "\n  " + pattern.string();
        refuse(fmt::format("Folder \"{}\" contains several image sequences; choose one:{}", folder, list));
    }
    FrameFiles frames;
    frames.pattern = patterns.front();
    addFrames(frames, names);
    return frames;
}

} // namespace

bool FrameFiles::isPicture(const std::string& file) {
    static constexpr std::array<const char*, 14> known = {"exr", "dpx", "tif", "tiff", "png", "jpg", "jpeg",
                                                          "cin", "tga", "sgi", "hdr",  "jp2", "bmp", "webp"};
    return std::find(known.begin(), known.end(), Image::fileExtension(file)) != known.end();
}

FrameFiles FrameFiles::find(const std::string& clip) {
    std::error_code error;
    const fs::file_status status = fs::status(clip, error);
    if (fs::is_directory(status)) return inFolder(clip);
    if (fs::exists(status)) {
        if (fs::path(clip).extension() == ".olcf")
            refuse(fmt::format("\"{}\" is a correction file; give the clip that it belongs to.", clip));
        if (!fs::is_regular_file(status)) refuse(fmt::format("\"{}\" is not a file that can be read as a clip.", clip));
        FrameFiles frames;
        frames.pattern = FilePattern::singleFile(clip);
        const NumberedName parts = split(fs::path(clip).filename().string());
        std::int32_t frame = 1;
        const bool separated =
            !parts.prefix.empty() && std::string("._-").find(parts.prefix.back()) != std::string::npos;
        if (separated || parts.prefix.empty()) {
            std::int32_t number = 0;
            const char* const end = parts.digits.data() + parts.digits.size();
            const auto [after, failed] = std::from_chars(parts.digits.data(), end, number);
            if (failed == std::errc() && after == end) frame = number;
        }
        frames.files.emplace(frame, clip);
        return frames;
    }
    FrameFiles frames;
    frames.pattern = FilePattern::parse(clip, FilePattern::Use::Input);
    if (!frames.pattern.hasFrameNumber()) {
        const bool isForShell = clip.find_first_of("*?") != std::string::npos;
        refuse(fmt::format("Clip \"{}\" does not exist.{}", clip,
                           isForShell ? " Write a sequence with %04d or #### in place of the frame number." : ""));
    }
    if (!fs::is_directory(frames.pattern.folder(), error)) {
        refuse(fmt::format("Folder \"{}\" of the clip \"{}\" does not exist.", frames.pattern.folder(), clip));
    }
    addFrames(frames, fileNames(frames.pattern.folder()));
    if (frames.files.empty()) refuse(fmt::format("No file matches the pattern \"{}\".", clip));
    return frames;
}

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
