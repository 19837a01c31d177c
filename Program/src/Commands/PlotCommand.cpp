#include "Commands.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <filesystem>
#include <string>

#include "Plot/LensReport.h"
#include "Report/Failure.h"
#include "System/AtomicFile.h"

namespace Program {

using namespace Tools;

namespace {

/// `plot`: pictures of a correction file's curves.
class PlotCommand : public Command {
public:
    std::string name() const override { return "plot"; }
    std::string summary() const override { return "Plot a correction file's curves as HTML or SVG"; }
    std::string example() const override;
    void declareOptions(CLI::App& app) override;
    ExitCode run() override;

private:
    std::string m_path;
    std::string m_outputPath; ///< its extension chooses the format
};

} // namespace

std::string PlotCommand::example() const {
    return "  lenscorrect plot A001C002.olcf -o report.html\n"
           "  lenscorrect plot A001C002.olcf -o curves.svg";
}

void PlotCommand::declareOptions(CLI::App& app) {
    app.add_option("FILE", m_path, "Correction file")->required();
    app.add_option("-o,--output", m_outputPath, "Page (.html) or picture (.svg) to write")->required();
}

ExitCode PlotCommand::run() {
    const std::string extension = std::filesystem::path(m_outputPath).extension().string();
    if (extension != ".html" && extension != ".svg") {
        refuse(fmt::format("{}: the output's name must end in .html or .svg.", m_outputPath));
    }
    refuseToReplace(m_path, m_outputPath);
    const LensReport report(CorrectionFileData::read(m_path));
    writeTextFile(m_outputPath, extension == ".html" ? report.html() : report.svg());
    return ExitCode::Done;
}

std::unique_ptr<Command> makePlotCommand() { return std::make_unique<PlotCommand>(); }

} // namespace Program
