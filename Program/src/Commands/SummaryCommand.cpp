#include "Commands/SummaryCommand.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <cstdio>

#include "Farm/FarmSummary.h"

namespace Program {

using namespace Tools;

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
    return summary.exitCode();
}

} // namespace Program
