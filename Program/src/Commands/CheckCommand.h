#pragma once

#include <string>
#include <vector>

#include "Commands/Command.h"

namespace Program {

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

} // namespace Program
