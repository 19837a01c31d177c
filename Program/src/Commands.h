#pragma once

#include <memory>
#include <string>
#include <vector>

#include "ExitCode.h"

namespace CLI {
class App;
}

namespace Program {

/// One sub-command of the program: declares its options, then does its work. Results go to the standard output, all
/// else to the error stream.
class Command {
public:
    Command() = default;
    Command(const Command&) = delete;
    Command& operator=(const Command&) = delete;
    virtual ~Command() = default;

    /// First word of the command line.
    virtual std::string name() const = 0;

    /// One line for the list of commands.
    virtual std::string summary() const = 0;

    /// Example for the end of the help text; lines without a line feed at the end.
    virtual std::string example() const = 0;

    /// Binds options to members; the object outlives the parse.
    virtual void declareOptions(CLI::App& app) = 0;

    /// Called once after a successful parse. Throws Failure, or an exception whose text is shown as it is.
    virtual ExitCode run() = 0;
};

// One source file each, in Commands/.
std::unique_ptr<Command> makeRenderCommand();
std::unique_ptr<Command> makeSampleCommand();
std::unique_ptr<Command> makeFindCommand();
std::unique_ptr<Command> makeInfoCommand();
std::unique_ptr<Command> makeCheckCommand();
std::unique_ptr<Command> makePlotCommand();
std::unique_ptr<Command> makeExportCommand();
std::unique_ptr<Command> makeStMapCommand();
std::unique_ptr<Command> makeVerifyCommand();
std::unique_ptr<Command> makeFormatsCommand();
std::unique_ptr<Command> makeDevicesCommand();
std::unique_ptr<Command> makeSubmitCommand();
std::unique_ptr<Command> makeSummaryCommand();
std::unique_ptr<Command> makeHelpCommand();

/// Makes every sub-command, in the order of the help text.
inline std::vector<std::unique_ptr<Command>> allCommands() {
    std::vector<std::unique_ptr<Command>> commands;
    commands.push_back(makeRenderCommand());
    commands.push_back(makeSampleCommand());
    commands.push_back(makeFindCommand());
    commands.push_back(makeInfoCommand());
    commands.push_back(makeCheckCommand());
    commands.push_back(makePlotCommand());
    commands.push_back(makeExportCommand());
    commands.push_back(makeStMapCommand());
    commands.push_back(makeVerifyCommand());
    commands.push_back(makeFormatsCommand());
    commands.push_back(makeDevicesCommand());
    commands.push_back(makeSubmitCommand());
    commands.push_back(makeSummaryCommand());
    commands.push_back(makeHelpCommand());
    return commands;
}

} // namespace Program
