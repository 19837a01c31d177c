#include "Commands.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <cstdio>

#include "Help.h"
#include "Report/Failure.h"

namespace Program {

using namespace Tools;

namespace {

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

} // namespace

std::string HelpCommand::example() const {
    return "  lenscorrect help plot\n"
           "Same as: lenscorrect plot --help";
}

void HelpCommand::declareOptions(CLI::App& app) {
    m_program = app.get_parent();
    app.add_option("COMMAND", m_command, "Command to explain; by default, list all commands");
    app.add_flag("--man", m_asManPage, "Print the manual page")->group("");
    app.add_flag("--completion", m_asCompletion, "Print the completion script for bash")->group("");
}

ExitCode HelpCommand::run() {
    if (m_asManPage) {
        fmt::print("{}", manPage(*m_program));
    } else if (m_asCompletion) {
        fmt::print("{}", bashCompletion(*m_program));
    } else {
        fmt::print("{}", helpText());
    }
    return ExitCode::Done;
}

std::string HelpCommand::helpText() const {
    // App::help() would tell about the command that was parsed, which is this one.
    if (m_command.empty())
        return m_program->get_formatter()->make_help(m_program, m_program->get_name(), CLI::AppFormatMode::Normal);
    for (const CLI::App* command : visibleCommands(*m_program)) {
        if (command->get_name() == m_command) return command->help(m_program->get_name());
    }
    const std::string text = noCommandText(*m_program, m_command);
    refuse(fmt::format("{}{} Run \"lenscorrect help\" for the list.", text, text.back() == '?' ? "" : "."));
}

std::unique_ptr<Command> makeHelpCommand() { return std::make_unique<HelpCommand>(); }

} // namespace Program
