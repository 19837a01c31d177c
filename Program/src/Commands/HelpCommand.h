#pragma once

#include "Commands/Command.h"

namespace Program {

/// `lenscorrect help [COMMAND]`: the help texts. Options for packaging print them as a manual page, or as a shell's
/// completion script; all of it comes from the commands' own declarations.
class HelpCommand : public Command {
public:
    std::string name() const override { return "help"; }
    std::string summary() const override { return "Explain a command and its options"; }
    std::string example() const override;
    void declareOptions(CLI::App& app) override;
    ExitCode run() override;

private:
    /// Throws Failure (WrongUse) for an unknown command.
    std::string helpText() const;

    CLI::App* m_program = nullptr;
    std::string m_command;
    bool m_asManPage = false;
    bool m_asCompletion = false;
};

} // namespace Program
