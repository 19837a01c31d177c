#pragma once

#include <memory>
#include <string>
#include <vector>

#include "Report/ExitCode.h"

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
    virtual ~Command();

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

/// Every sub-command, in the order of the help text.
std::vector<std::unique_ptr<Command>> allCommands();

} // namespace Program
