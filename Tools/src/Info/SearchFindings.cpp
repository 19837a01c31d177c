#include "Info/SearchFindings.h"

#include <fmt/format.h>

#include <algorithm>
#include <boost/algorithm/string/predicate.hpp>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <system_error>

#include "CorrectionData/Content.h"
#include "CorrectionFile/Finder/ClipName.h"
#include "CorrectionFile/Parser/InvalidFormatException.h"
#include "CorrectionFile/Parser/Parser.h"
#include "CorrectionFile/Reader/Reader.h"
#include "Exception/Exception.h"

namespace Tools {

namespace {

namespace fs = std::filesystem;
using CorrectionData::Header;
using CorrectionFile::ClipName;

std::vector<fs::path> correctionFiles(const std::string& folder) {
    std::vector<fs::path> files;
    std::error_code error;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
        if (boost::algorithm::iends_with(entry->path().filename().string(), ".olcf")) files.push_back(entry->path());
    }
    std::sort(files.begin(), files.end());
    return files;
}

std::string reasonByName(const ClipName& clip, const std::string& name) {
    if (!name.ends_with(".olcf")) return "its name does not end in \".olcf\" in lower case";
    return fmt::format("its name does not contain \"{}\"", clip.stem());
}

std::string reasonByContent(const ClipName& clip, const fs::path& file) {
    Header header;
    try {
        std::string text;
        CorrectionFile::Reader().readFile(file.string(), text);
        CorrectionFile::Parser().parseHeader(text, header);
    } catch (const CorrectionFile::InvalidFormatException&) {
        return "it cannot be parsed; \"lenscorrect check\" lists its defects";
    } catch (const Exception&) {
        return "it cannot be read";
    }
    const bool hasOneName = header.clipName.empty() || header.clipName == header.videoFileName;
    return fmt::format("its header names the clip \"{}\"{}, not \"{}\"", header.videoFileName,
                       hasOneName ? "" : fmt::format(" or \"{}\"", header.clipName), clip.file());
}

} // namespace

std::vector<PassedOverFile> passedOverFiles(const std::string& clipFilePath,
                                            const std::vector<std::string>& searchedFolders) {
    const ClipName clip(clipFilePath);
    std::vector<PassedOverFile> passedOver;
    for (const std::string& folder : searchedFolders) {
        for (const fs::path& file : correctionFiles(folder)) {
            const std::string name = file.filename().string();
            const bool isOfClipsFolder = &folder == &searchedFolders.front();
            if (!isOfClipsFolder && name.find(clip.stem()) == std::string::npos) continue;
            passedOver.push_back(
                {file.string(), clip.isIn(name) ? reasonByContent(clip, file) : reasonByName(clip, name)});
        }
    }
    return passedOver;
}

nlohmann::ordered_json json(const std::vector<PassedOverFile>& files) {
    nlohmann::ordered_json list = nlohmann::ordered_json::array();
    for (const PassedOverFile& file : files) list.push_back({{"path", file.path}, {"reason", file.reason}});
    return list;
}

std::vector<std::string> shortListOf(const std::vector<std::string>& searchedFolders) {
    constexpr std::size_t mostFolders = 10;
    if (searchedFolders.size() <= mostFolders) return searchedFolders;
    std::vector<std::string> lines(searchedFolders.begin(), searchedFolders.begin() + mostFolders);
    lines.push_back(
        fmt::format("and {} more; \"lenscorrect find --all\" lists them", searchedFolders.size() - mostFolders));
    return lines;
}

} // namespace Tools
