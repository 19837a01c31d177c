#include "Commands.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <string>

#include "Export/OpenTrackIoExport.h"
#include "Report/Json.h"
#include "System/AtomicFile.h"

namespace Program {

using namespace Tools;

namespace {

/// `export`: a correction file's lens data for other programs.
class ExportCommand : public Command {
public:
    std::string name() const override { return "export"; }
    std::string summary() const override { return "Write a correction file's lens data for other programs"; }
    std::string example() const override;
    void declareOptions(CLI::App& app) override;

    /// SomeFramesFailed if the curves of a frame cannot be fitted; the others are written.
    ExitCode run() override;

private:
    std::string m_path;
    std::string m_outputPath;
    bool m_asOpenTrackIo = false;
};

} // namespace

std::string ExportCommand::example() const {
    return "  lenscorrect export --opentrackio A001C002.olcf -o A001C002.json";
}

void ExportCommand::declareOptions(CLI::App& app) {
    app.add_flag("--opentrackio", m_asOpenTrackIo,
                 "OpenTrackIO 1.0 samples, one per frame (Docs/schemas/opentrackio-export.json)")
        ->required();
    app.add_option("FILE", m_path, "Correction file")->required();
    app.add_option("-o,--output", m_outputPath, "JSON file to write")->required();
}

ExitCode ExportCommand::run() {
    refuseToReplace(m_path, m_outputPath);
    const OpenTrackIoExport exported(CorrectionFileData::read(m_path));
    writeTextFile(m_outputPath, jsonText(exported.document) + "\n");
    const auto pixels = [](double value) { return value > 0.0 ? fmt::format(" ({:.3f} px)", value) : std::string(); };
    fmt::print("Largest residual, distorted to undistorted: {:.2g} mm{}\n", exported.correctedMillimetres,
               pixels(exported.correctedPixels));
    fmt::print("Largest residual, undistorted to distorted: {:.2g} mm{}\n", exported.recordedMillimetres,
               pixels(exported.recordedPixels));
    fmt::print("Largest residual, exposure fall-off:        {:.2g} %\n", exported.falloffPercent);
    if (exported.failedCount == 0) return ExitCode::Done;
    fmt::print(stderr,
               "lenscorrect: {}: {} of the frames have no curves and no sample; run \"lenscorrect check\" on it.\n",
               m_path, exported.failedCount);
    return ExitCode::SomeFramesFailed;
}

std::unique_ptr<Command> makeExportCommand() { return std::make_unique<ExportCommand>(); }

} // namespace Program
