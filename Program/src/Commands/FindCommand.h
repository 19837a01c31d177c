#pragma once

#include "Commands/Command.h"

namespace Program {

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

} // namespace Program
