#include "Commands.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "Check/FileCheck.h"
#include "Report/Json.h"
#include "Report/PrintableText.h"

namespace Program {

using namespace Tools;

namespace {

using nlohmann::ordered_json;

const char* word(Finding::Severity severity) { return severity == Finding::Severity::Defect ? "defect" : "warning"; }

CheckSummary checkAsText(const std::string& path) {
    const CheckSummary summary = FileCheck([&](const Finding& finding) {
                                     const std::string line =
                                         finding.lineNumber > 0 ? fmt::format(":{}", finding.lineNumber) : "";
                                     fmt::print("{}{}: {}: {}\n", path, line, word(finding.severity), finding.message);
                                 }).check(path);
    std::string frames = counted(summary.frameCount, "frame");
    if (summary.frameCount > 0) frames += fmt::format(" {}-{}", summary.firstFrame, summary.lastFrame);
    const std::string verdict = summary.defectCount == 0 ? "ok" : counted(summary.defectCount, "defect");
    fmt::print("{}: {}, {}, {}\n", path, verdict, counted(summary.warningCount, "warning"), frames);
    return summary;
}

// Written finding by finding: a broken file may have millions of them.
CheckSummary checkAsJson(const std::string& path) {
    fmt::print("  {{\"file\": {}, \"findings\": [", jsonLine(path));
    const char* separator = "\n";
    const CheckSummary summary = FileCheck([&](const Finding& finding) {
                                     const ordered_json json = {{"severity", word(finding.severity)},
                                                                {"line", finding.lineNumber},
                                                                {"kind", finding.kind},
                                                                {"message", finding.message}};
                                     fmt::print("{}    {}", separator, jsonLine(json));
                                     separator = ",\n";
                                 }).check(path);
    fmt::print("],\n   \"ok\": {}, \"defects\": {}, \"warnings\": {}, \"fileVersion\": {},\n   \"frames\": ",
               summary.defectCount == 0, summary.defectCount, summary.warningCount, summary.fileVersion);
    if (summary.frameCount > 0) {
        fmt::print("{{\"count\": {}, \"first\": {}, \"last\": {}}}}}", summary.frameCount, summary.firstFrame,
                   summary.lastFrame);
    } else {
        fmt::print("{{\"count\": 0, \"first\": null, \"last\": null}}}}");
    }
    return summary;
}

/// `check`: everything that is wrong in correction files, in one go.
class CheckCommand : public Command {
public:
    std::string name() const override { return "check"; }
    std::string summary() const override { return "List every defect in correction files, with line numbers"; }
    std::string example() const override;
    void declareOptions(CLI::App& app) override;

    /// WrongUse if a file has a defect; warnings alone are no failure.
    ExitCode run() override;

private:
    std::vector<std::string> m_paths;
    bool m_asJson = false;
};

} // namespace

std::string CheckCommand::example() const {
    return "  lenscorrect check A001C002.olcf\n"
           "  lenscorrect check --json *.olcf";
}

void CheckCommand::declareOptions(CLI::App& app) {
    app.add_option("FILE", m_paths, "Correction files")->required();
    app.add_flag("--json", m_asJson, "Print JSON (Docs/schemas/check.json)");
}

ExitCode CheckCommand::run() {
    bool hasDefect = false;
    if (m_asJson) fmt::print("{{\"version\": 1, \"files\": [\n");
    for (std::size_t index = 0; index < m_paths.size(); ++index) {
        if (m_asJson && index > 0) fmt::print(",\n");
        const CheckSummary summary = m_asJson ? checkAsJson(m_paths[index]) : checkAsText(m_paths[index]);
        hasDefect |= summary.defectCount > 0;
    }
    if (m_asJson) fmt::print("\n]}}\n");
    return hasDefect ? ExitCode::WrongUse : ExitCode::Done;
}

std::unique_ptr<Command> makeCheckCommand() { return std::make_unique<CheckCommand>(); }

} // namespace Program
