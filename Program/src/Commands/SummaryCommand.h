#pragma once

#include <string>

#include "Commands/Command.h"

namespace Program {

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

} // namespace Program
