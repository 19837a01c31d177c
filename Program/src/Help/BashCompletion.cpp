#include "Help/BashCompletion.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>

#include "Help/Declarations.h"

namespace Program {

namespace {

std::string joined(const std::vector<std::string>& words, const char* separator) {
    return fmt::format("{}", fmt::join(words, separator));
}

std::string optionNames(const CLI::App& app) {
    std::vector<std::string> names;
    for (const CLI::Option* option : visibleOptions(app)) {
        if (option->get_positional()) continue;
        for (const std::string& name : namesOf(*option)) names.push_back(name);
    }
    return joined(names, " ");
}

/// What follows an option that takes a value: certain words, or anything, for which file names are offered.
std::string valueCases(const CLI::App& command) {
    std::string text;
    for (const CLI::Option* option : visibleOptions(command)) {
        if (option->get_positional() || option->get_items_expected_max() == 0) continue;
        std::vector<std::string> patterns;
        for (const std::string& name : namesOf(*option)) patterns.push_back(command.get_name() + ":" + name);
        const std::vector<std::string> choices = choicesOf(*option);
        text += fmt::format("        {}) words='{}'; files={} ;;\n", joined(patterns, "|"), joined(choices, " "),
                            choices.empty() ? 1 : 0);
    }
    return text;
}

} // namespace

std::string bashCompletion(const CLI::App& program) {
    std::vector<std::string> commands;
    std::string cases;
    std::string options;
    for (const CLI::App* command : visibleCommands(program)) {
        commands.push_back(command->get_name());
        cases += valueCases(*command);
        options += fmt::format("        {}:-*) words='{}'; files=0 ;;\n", command->get_name(), optionNames(*command));
    }
    const std::string commandNames = joined(commands, " ");
    return fmt::format(
        "# bash completion for lenscorrect; made by \"lenscorrect help --completion\"\n"
        "_lenscorrect() {{\n"
        "    local current=${{COMP_WORDS[COMP_CWORD]}} previous=${{COMP_WORDS[COMP_CWORD-1]}}\n"
        "    local command=${{COMP_WORDS[1]}} words='' files=1\n"
        "    COMPREPLY=()\n"
        "    if [ \"$COMP_CWORD\" -eq 1 ]; then\n"
        "        mapfile -t COMPREPLY < <(compgen -W '{0} {1}' -- \"$current\")\n"
        "        return\n"
        "    fi\n"
        "    case \"$command:$previous\" in\n"
        "{2}"
        "    *) case \"$command:$current\" in\n"
        "        help:*) words='{0}'; files=0 ;;\n"
        "{3}"
        "        esac ;;\n"
        "    esac\n"
        "    if [ \"$files\" -eq 1 ]; then\n"
        "        compopt -o filenames 2>/dev/null\n"
        "        mapfile -t COMPREPLY < <(compgen -f -- \"$current\")\n"
        "    else\n"
        "        mapfile -t COMPREPLY < <(compgen -W \"$words\" -- \"$current\")\n"
        "    fi\n"
        "}}\n"
        "complete -F _lenscorrect lenscorrect\n",
        commandNames, optionNames(program), cases, options);
}

} // namespace Program
