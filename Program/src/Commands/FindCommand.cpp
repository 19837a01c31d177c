#include "Commands.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <boost/filesystem.hpp>
#include <cstdio>
#include <nlohmann/json.hpp>

#include "Chain/SearchPath.h"
#include "Clip/FrameFiles.h"
#include "Core/FramePreparation.h"
#include "CorrectionFile/Finder/ClipFilePathBasedFinder.h"
#include "CorrectionFile/Finder/NotFoundException.h"
#include "ImageError.h"
#include "Info/SearchFindings.h"
#include "Report/Failure.h"
#include "Report/Json.h"

namespace Program {

using namespace Tools;

namespace {

void printJson(const nlohmann::ordered_json& json) { fmt::print("{}\n", jsonText(json)); }

/// The path that is searched for, and a last line for errors if its name is not that of the files; otherwise `note`
/// stays empty. Files that cannot be read have no metadata.
void findClip(const std::string& clip, std::string& path, std::string& note) {
    path = clipFilePath(FrameFiles::find(clip));
    try {
        const Clip files(clip);
        ClipSurvey survey(files, {});
        std::vector<std::int32_t> frames;
        for (const auto& entry : files.frames()) frames.push_back(entry.first);
        path = searchPath(files, survey, frames);
        note = nameNote(files, path);
        if (!note.empty()) note.insert(0, "\n");
    } catch (const Image::ImageError&) {
        return;
    }
}

/// `find`: the correction file of a clip, or the folders that were searched for it.
class FindCommand : public Command {
public:
    std::string name() const override { return "find"; }
    std::string summary() const override { return "Print the path of a clip's correction file"; }
    std::string example() const override;
    void declareOptions(CLI::App& app) override;
    ExitCode run() override;

private:
    std::string m_clip;
    bool m_showsAll = false;
    bool m_asJson = false;
};

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
    std::string clip, note;
    findClip(m_clip, clip, note);
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
        text += note;
        throw Failure(Failure::Kind::WrongUse, text);
    } catch (const boost::filesystem::filesystem_error& error) {
        throw Failure(
            Failure::Kind::WrongUse,
            fmt::format(
                "No correction file for the clip \"{}\" was found, but folder \"{}\" could not be searched: {}. "
                "If the file is there, make the folder readable, or place the file next to the clip.{}",
                clip, error.path1().string(), error.code().message(), note));
    }
    if (m_asJson) {
        printJson({{"version", 1}, {"clip", clip}, {"correctionFile", file}});
    } else {
        fmt::print("{}\n", file);
    }
    return ExitCode::Done;
}

std::unique_ptr<Command> makeFindCommand() { return std::make_unique<FindCommand>(); }

} // namespace Program
