#include "Commands.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <string>

#include "Farm/FarmSummary.h"

namespace Program {

using namespace Tools;

namespace {

/// `summary`: what became of the frames of a farm job. Its exit status is the job's.
class SummaryCommand : public Command {
public:
    std::string name() const override { return "summary"; }
    std::string summary() const override { return "Report the state of a farm job's frames"; }
    std::string example() const override;
    void declareOptions(CLI::App& app) override;
    ExitCode run() override;

private:
    std::string m_folder;
    bool m_asJson = false;
};

} // namespace

std::string SummaryCommand::example() const {
    return "  lenscorrect summary lenscorrect-job-1\n"
           "Works at any time. Exits with 0 when every frame is done, otherwise with the worst status of the job's "
           "steps.";
}

void SummaryCommand::declareOptions(CLI::App& app) {
    app.add_option("FOLDER", m_folder, "Job folder, as printed by \"lenscorrect submit\"")->required();
    app.add_flag("--json", m_asJson, "Print JSON (Docs/schemas/summary.json)");
}

ExitCode SummaryCommand::run() {
    const FarmSummary summary = FarmSummary::read(m_folder);
    fmt::print("{}", m_asJson ? summary.json() : summary.text());
    return static_cast<ExitCode>(summary.exitStatus());
}

std::unique_ptr<Command> makeSummaryCommand() { return std::make_unique<SummaryCommand>(); }

} // namespace Program
