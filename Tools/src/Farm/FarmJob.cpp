#include "Farm/FarmJob.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>

#include "Clip/FrameRange.h"
#include "Report/Failure.h"
#include "System/AtomicFile.h"

namespace Tools {

std::string shellQuoted(const std::string& text) {
    std::string result = "'";
    for (const char character : text) {
        if (character == '\'') {
            result += "'\\''";
        } else {
            result += character;
        }
    }
    return result + "'";
}

std::string shellQuoted(const std::vector<std::string>& texts) {
    std::string result;
    for (const std::string& text : texts) result += (result.empty() ? "" : " ") + shellQuoted(text);
    return result;
}

namespace {

namespace fs = std::filesystem;

/// `wait` ends at a signal while a program in the foreground would be waited for first; so the program is a child in
/// the background, and gets the signal handed on.
constexpr const char* steps =
#include "Farm/steps.sh.inc"
    ;

} // namespace

std::vector<std::string> FarmJob::chunks() const {
    std::vector<std::string> lists;
    for (std::size_t begin = 0; begin < frames.size(); begin += framesPerChunk) {
        const auto first = frames.begin() + static_cast<std::ptrdiff_t>(begin);
        const std::size_t count = std::min(framesPerChunk, frames.size() - begin);
        lists.push_back(FrameRange::string({first, first + static_cast<std::ptrdiff_t>(count)}));
    }
    return lists;
}

void FarmJob::write() const {
    std::error_code error;
    fs::create_directories(fs::path(folder).parent_path(), error);
    if (!fs::create_directory(folder, error) && !error) {
        refuse(fmt::format("{}: the job folder already exists. Give another --folder.", folder));
    }
    for (const char* part : {"report", "log"}) {
        if (!error) fs::create_directory(folder + "/" + part, error);
    }
    if (error)
        throw Failure(Failure::Kind::Output, fmt::format("{}: could not be created: {}.", folder, error.message()));
    writeTextFile(folder + "/frames.txt", FrameRange::string(frames) + "\n");
    writeTextFile(folder + "/work.txt", workingFolder + "\n");
    writeTextFile(folder + "/chunks.txt", fmt::format("{}\n", fmt::join(chunks(), "\n")));
    writeTextFile(scriptPath(), fmt::format("#!/bin/bash\n# Made by lenscorrect submit.\n"
                                            "folder={}\nwork={}\nlenscorrect={}\nrender=({})\n\n{}",
                                            shellQuoted(folder), shellQuoted(workingFolder), shellQuoted(program),
                                            shellQuoted(renderArguments), steps));
}

std::string FarmJob::nameFrom(const std::string& text) {
    std::string name;
    for (const char character : text) {
        const bool isPlain = (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z') ||
                             (character >= '0' && character <= '9');
        if (isPlain || name.empty() || name.back() != '_') name += isPlain ? character : '_';
    }
    while (!name.empty() && name.back() == '_') name.pop_back();
    return name.size() < 3 ? "lenscorrect_" + name : name;
}

} // namespace Tools
