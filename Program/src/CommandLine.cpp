#include "CommandLine.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <cstdio>
#include <new>
#include <string_view>

#include "Commands.h"
#include "Exception/Exception.h"
#include "Help.h"
#include "Report/Failure.h"
#include "Report/PrintableText.h"

namespace Program {

using namespace Tools;

namespace {

const CLI::App& chosenCommand(const CLI::App& app) {
    const std::vector<CLI::App*> chosen = app.get_subcommands();
    return chosen.empty() ? app : *chosen.front();
}

ExitCode reportUsage(const CLI::App& app, const std::string& text) {
    const CLI::App& command = chosenCommand(app);
    const std::string name = &command == &app ? "lenscorrect" : "lenscorrect " + command.get_name();
    fmt::print(stderr, "lenscorrect: {}\nRun \"{} --help\" for the options and an example.\n", printableText(text),
               name);
    return ExitCode::WrongUse;
}

std::vector<std::string> optionNames(const CLI::App& command) {
    std::vector<std::string> names;
    for (const CLI::Option* option : visibleOptions(command)) {
        const std::vector<std::string> ofOption = namesOf(*option);
        names.insert(names.end(), ofOption.begin(), ofOption.end());
    }
    return names;
}

/// The library words its own messages, but what it does not know explains more than what it misses therefore.
std::string messageOf(const CLI::App& app, const CLI::ParseError& error) {
    const std::vector<std::string> unknown = app.remaining(true);
    if (unknown.empty()) return error.what();
    const bool isCommand = app.get_subcommands().empty() && unknown.front().front() != '-';
    if (isCommand) return noCommandText(app, unknown.front());
    std::string text = fmt::format("The following argument{} not expected: {}", unknown.size() == 1 ? " was" : "s were",
                                   fmt::join(unknown, " "));
    const bool isOption = unknown.front().front() == '-';
    // Mostly what a shell makes of a "*".
    const CLI::App& command = chosenCommand(app);
    if (!isOption && (command.get_option_no_throw("CLIP") || command.get_option_no_throw("PATH")))
        text += "; a sequence is one argument, such as plate.%04d.exr";
    if (isOption) text += suggestionFor(unknown.front().substr(0, unknown.front().find('=')), optionNames(command));
    return text;
}

/// An option that took another one for its value; empty: none. What takes many values may be meant to take options.
std::string optionWithoutValue(const CLI::App& command) {
    const std::vector<const CLI::Option*> options = visibleOptions(command);
    for (const CLI::Option* option : options) {
        if (option->get_items_expected_max() > 1) continue;
        for (const std::string& value : option->results()) {
            const auto isNameOf = [&](const CLI::Option* other) {
                const std::vector<std::string> names = namesOf(*other);
                return value.front() == '-' && std::find(names.begin(), names.end(), value) != names.end();
            };
            if (!value.empty() && std::any_of(options.begin(), options.end(), isNameOf)) return namesOf(*option).back();
        }
    }
    return {};
}

/// An option or argument that was given without a text, as by a script's variable that is not set; empty: none.
std::string emptyArgument(const CLI::App& command) {
    for (const CLI::Option* option : visibleOptions(command)) {
        for (const std::string& value : option->results()) {
            if (value.empty()) return namesOf(*option).back();
        }
    }
    return {};
}

ExitCode reportError(ExitCode exitCode, const std::string& text) {
    fmt::print(stderr, "lenscorrect: {}\n", printableText(text));
    return exitCode;
}

} // namespace

ExitCode runCommandLine(int argumentCount, const char* const* arguments) {
    CLI::App app(
        "Corrects the lens distortion and shading of recorded footage, using the lens correction file supplied with "
        "each clip.",
        "lenscorrect");
    app.require_subcommand(1);
    app.set_version_flag("-v,--version", "lenscorrect " ORVEX_VERSION);
    const std::vector<std::unique_ptr<Command>> commands = allCommands();
    std::vector<CLI::App*> parsers;
    for (const std::unique_ptr<Command>& command : commands) {
        CLI::App* const parser = app.add_subcommand(command->name(), command->summary());
        parser->footer("\nExample:\n" + command->example());
        command->declareOptions(*parser);
        parsers.push_back(parser);
    }
    // What a person tries first, after other programs.
    constexpr std::array<const char*, 2> askVersion{"lenscorrect", "--version"};
    const bool asksVersion = argumentCount == 2 && std::string_view(arguments[1]) == "version";
    if (asksVersion) arguments = askVersion.data();
    try {
        app.parse(argumentCount, arguments);
    } catch (const CLI::ParseError& error) {
        // Help and the version come as "errors" of status 0.
        if (error.get_exit_code() == 0) {
            app.exit(error);
            return ExitCode::Done;
        }
        if (const std::string name = optionWithoutValue(chosenCommand(app)); !name.empty())
            return reportUsage(app, fmt::format("{} has no value", name));
        return reportUsage(app, messageOf(app, error));
    }
    if (const std::string name = optionWithoutValue(chosenCommand(app)); !name.empty())
        return reportUsage(app, fmt::format("{} has no value", name));
    if (const std::string name = emptyArgument(chosenCommand(app)); !name.empty())
        return reportUsage(app, fmt::format("{} is empty", name));
    try {
        for (std::size_t index = 0; index < commands.size(); ++index) {
            if (parsers[index]->parsed()) return commands[index]->run();
        }
        return ExitCode::WrongUse; // not reached: one sub-command is required
    } catch (const Failure& failure) {
        return reportError(exitCodeOf(failure.kind()), failure.text());
    } catch (const Exception& exception) {
        return reportError(ExitCode::WrongUse, withoutLastLineFeeds(exception.detailedDescription()));
    } catch (const std::bad_alloc&) {
        return reportError(ExitCode::Environment, "There is not enough memory; try a smaller --memory.");
    } catch (const std::exception& exception) {
        return reportError(ExitCode::WrongUse, exception.what());
    }
}

} // namespace Program
