#include "Commands/CommandLine.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <new>

#include "Commands/Command.h"
#include "Console/Failure.h"
#include "Exception/Exception.h"

namespace Host {
namespace {

/// The library words its own messages; only ours say where help is.
ExitCode reportUsage(const CLI::App& app, const CLI::ParseError& error) {
    const CLI::App* command = &app;
    for (const CLI::App* chosen : app.get_subcommands()) command = chosen;
    const std::string name = command == &app ? "lenscorrect" : "lenscorrect " + command->get_name();
    fmt::print(stderr, "lenscorrect: {}\nRun \"{} --help\" for the options and an example.\n", error.what(), name);
    return ExitCode::WrongUse;
}

ExitCode reportError(ExitCode exitCode, const std::string& text) {
    fmt::print(stderr, "lenscorrect: {}\n", text);
    return exitCode;
}

} // namespace

ExitCode runCommandLine(int argumentCount, const char* const* arguments) {
    CLI::App app("Corrects lens distortion and lens shading of recorded footage, driven by its correction file.",
                 "lenscorrect");
    app.require_subcommand(1);
    app.set_version_flag("--version", "lenscorrect " ORVEX_VERSION);
    const std::vector<std::unique_ptr<Command>> commands = allCommands();
    std::vector<CLI::App*> parsers;
    for (const std::unique_ptr<Command>& command : commands) {
        CLI::App* const parser = app.add_subcommand(command->name(), command->summary());
        parser->footer("\nExample:\n" + command->example());
        command->declareOptions(*parser);
        parsers.push_back(parser);
    }
    try {
        app.parse(argumentCount, arguments);
    } catch (const CLI::ParseError& error) {
        // Help and the version come as "errors" of status 0.
        if (error.get_exit_code() != 0) return reportUsage(app, error);
        app.exit(error);
        return ExitCode::Done;
    }
    try {
        for (std::size_t index = 0; index < commands.size(); ++index) {
            if (parsers[index]->parsed()) return commands[index]->run();
        }
        return ExitCode::WrongUse; // not reached: one sub-command is required
    } catch (const Failure& failure) {
        return reportError(failure.exitCode(), failure.what());
    } catch (const Exception& exception) {
        std::string text = exception.detailedDescription();
        while (!text.empty() && text.back() == '\n') text.pop_back();
        return reportError(ExitCode::WrongUse, text);
    } catch (const std::bad_alloc&) {
        return reportError(ExitCode::Environment, "There is not enough memory; try a smaller --memory.");
    } catch (const std::exception& exception) {
        return reportError(ExitCode::WrongUse, exception.what());
    }
}

} // namespace Host
