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
#include "Inspect/SearchedFolders.h"

namespace Host {
namespace {

void printJson(const nlohmann::ordered_json& json) {
    fmt::print("{}\n", json.dump(2, ' ', false, nlohmann::json::error_handler_t::replace));
}

} // namespace

std::string FindCommand::example() const {
    return "  lenscorrect find /shots/A001C002.%04d.exr\n"
           "Searches the clip's folder, its subfolders, five parent folders and two levels below each of those.";
}

void FindCommand::declareOptions(CLI::App& app) {
    app.add_option("CLIP", m_clip, "Movie, file pattern (%04d, ####), picture file, or folder with one sequence")
        ->required();
    app.add_flag("--all", m_showsAll, "If no file is found, list all folders searched, not just ten");
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
            fmt::format("No correction file for the clip \"{}\" was found. Folders searched, in order:", clip);
        const std::vector<std::string>& folders = exception.searchedDirectoryPaths();
        for (const std::string& folder : m_showsAll ? folders : shortListOf(folders)) text += "\n  " + folder;
        if (!passedOver.empty()) text += "\nFiles rejected:";
        for (const PassedOverFile& other : passedOver) text += fmt::format("\n  {}: {}", other.path, other.reason);
        text += "\nA match ends in .olcf, contains the clip's name, and names this clip in its header.";
        throw Failure(ExitCode::WrongUse, text);
    } catch (const boost::filesystem::filesystem_error& error) {
        throw Failure(
            ExitCode::WrongUse,
            fmt::format(
                "No correction file for the clip \"{}\" was found, but folder \"{}\" could not be searched: {}. "
                "If the file is there, make the folder readable, or place the file next to the clip.",
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
