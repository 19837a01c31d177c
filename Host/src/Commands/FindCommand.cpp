#include "Commands/FindCommand.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <boost/filesystem.hpp>
#include <cstdio>
#include <nlohmann/json.hpp>

#include "Console/Failure.h"
#include "Core/FramePreparation.h"
#include "CorrectionFile/Finder/ClipFilePathBasedFinder.h"
#include "CorrectionFile/Finder/NotFoundException.h"
#include "Frames/ClipPath.h"
#include "Inspect/PassedOverFiles.h"

namespace Host {
namespace {

void printJson(const nlohmann::ordered_json& json) {
    fmt::print("{}\n", json.dump(2, ' ', false, nlohmann::json::error_handler_t::replace));
}

} // namespace

std::string FindCommand::example() const {
    return "  lenscorrect find /shots/A001C002.%04d.exr\n"
           "Searched are the clip's folder, its subfolders, five folders above it and two levels below each of those.";
}

void FindCommand::declareOptions(CLI::App& app) {
    app.add_option("CLIP", m_clip, "Movie, file pattern (%04d, ####), picture file, or folder with one sequence")
        ->required();
    app.add_flag("--json", m_asJson, "Print JSON (Docs/schemas/find.json)");
}

ExitCode FindCommand::run() {
    const std::string clip = clipFilePath(FrameFiles::find(m_clip));
    std::string file;
    try {
        CorrectionFile::ClipFilePathBasedFinder(clip, Core::correctionFileSearchDepth).find(file);
    } catch (const CorrectionFile::NotFoundException& exception) {
        const std::vector<PassedOverFile> passedOver = passedOverFiles(clip, exception.searchedDirectoryPaths());
        if (m_asJson) {
            printJson({{"version", 1},
                       {"clip", clip},
                       {"correctionFile", nullptr},
                       {"searchedFolders", exception.searchedDirectoryPaths()},
                       {"passedOverFiles", json(passedOver)}});
            return ExitCode::WrongUse;
        }
        std::string text =
            fmt::format("No correction file of the clip \"{}\" was found. Searched were, in this order:", clip);
        for (const std::string& folder : exception.searchedDirectoryPaths()) text += "\n  " + folder;
        if (!passedOver.empty()) text += "\nPassed over were:";
        for (const PassedOverFile& other : passedOver) text += fmt::format("\n  {}: {}", other.path, other.reason);
        text += "\nIts name ends in .olcf and contains the clip's name, and its header names the clip.";
        throw Failure(ExitCode::WrongUse, text);
    } catch (const boost::filesystem::filesystem_error& error) {
        throw Failure(
            ExitCode::WrongUse,
            fmt::format("The search for the correction file of the clip \"{}\" ended at folder \"{}\": {}. Make "
                        "that folder readable, or lay the correction file beside the clip.",
                        clip, error.path1().string(), error.code().message()));
    }
    if (m_asJson) {
        printJson({{"version", 1}, {"clip", clip}, {"correctionFile", file}});
    } else {
        fmt::print("{}\n", file);
    }
    return ExitCode::Done;
}

} // namespace Host
