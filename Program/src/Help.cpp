#include "Help.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstddef>

#include "ExitCode.h"

namespace Program {

namespace {

/// The type's name followed by the accepted words: "TEXT:{half,float}".
std::string typeOf(const CLI::Option& option) { return option.get_type_name(); }

/// Optimal string alignment: a letter takes part in one swap at most.
std::size_t slipsBetween(const std::string& a, const std::string& b) {
    std::vector<std::vector<std::size_t>> slips(a.size() + 1, std::vector<std::size_t>(b.size() + 1));
    for (std::size_t i = 0; i <= a.size(); ++i) {
        for (std::size_t j = 0; j <= b.size(); ++j) {
            if (i == 0 || j == 0) {
                slips[i][j] = i + j;
                continue;
            }
            slips[i][j] = std::min(
                {slips[i - 1][j] + 1, slips[i][j - 1] + 1, slips[i - 1][j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1)});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1])
                slips[i][j] = std::min(slips[i][j], slips[i - 2][j - 2] + 1);
        }
    }
    return slips[a.size()][b.size()];
}

} // namespace

std::vector<const CLI::App*> visibleCommands(const CLI::App& app) {
    return app.get_subcommands(
        [](const CLI::App* command) { return !command->get_name().empty() && !command->get_group().empty(); });
}

std::vector<const CLI::Option*> visibleOptions(const CLI::App& app) {
    std::vector<const CLI::Option*> options =
        app.get_options([](const CLI::Option* option) { return !option->get_group().empty(); });
    // A group of options is a command without a name to the parser.
    for (const CLI::App* group : app.get_subcommands([](const CLI::App* part) { return part->get_name().empty(); })) {
        const CLI::Option* const ownHelp = group->get_help_ptr(); // inherited; the command's is enough
        for (const CLI::Option* option : visibleOptions(*group))
            if (option != ownHelp) options.push_back(option);
    }
    return options;
}

std::vector<std::string> namesOf(const CLI::Option& option) {
    if (option.get_positional()) return {option.get_name(true)};
    std::vector<std::string> names;
    for (const std::string& name : option.get_snames()) names.push_back("-" + name);
    for (const std::string& name : option.get_lnames()) names.push_back("--" + name);
    return names;
}

std::string valueOf(const CLI::Option& option) {
    if (option.get_positional() || option.get_items_expected_max() == 0) return {};
    const std::string type = typeOf(option);
    return type.substr(0, type.find(':'));
}

std::vector<std::string> choicesOf(const CLI::Option& option) {
    const std::string type = typeOf(option);
    const std::size_t start = type.find('{');
    const std::size_t end = type.find('}', start);
    if (end == std::string::npos) return {};
    return CLI::detail::split(type.substr(start + 1, end - start - 1), ',');
}

std::string suggestionFor(const std::string& misspelt, const std::vector<std::string>& known) {
    constexpr std::size_t longest = 64; // no name of ours is; the work grows with the square
    if (misspelt.size() > longest) return {};
    const std::string* nearest = nullptr;
    std::size_t fewest = std::max<std::size_t>(1, misspelt.size() / 3) + 1;
    for (const std::string& name : known) {
        const std::size_t slips = slipsBetween(misspelt, name);
        if (slips >= fewest) continue;
        fewest = slips;
        nearest = &name;
    }
    return nearest ? "; did you mean \"" + *nearest + "\"?" : "";
}

std::string noCommandText(const CLI::App& program, const std::string& name) {
    std::vector<std::string> names;
    for (const CLI::App* command : visibleCommands(program)) names.push_back(command->get_name());
    return "There is no command \"" + name + '"' + suggestionFor(name, names);
}

namespace {

/// Plain text for roff: no escapes, no requests at the start of a line, and signs that can be copied into a shell.
std::string escaped(const std::string& text) {
    std::string result;
    bool isLineStart = true;
    for (const char character : text) {
        if (isLineStart && (character == '.' || character == '\'')) result += "\\&";
        isLineStart = character == '\n';
        switch (character) {
            case '\\':
                result += "\\e";
                break;
            case '-':
                result += "\\-";
                break;
            case '\'':
                result += "\\(aq";
                break;
            case '`':
                result += "\\(ga";
                break;
            case '^':
                result += "\\(ha";
                break;
            case '~':
                result += "\\(ti";
                break;
            default:
                result += character;
        }
    }
    return result;
}

std::string optionText(const CLI::Option& option) {
    std::string names;
    for (const std::string& name : namesOf(option)) names += (names.empty() ? "" : ", ") + name;
    std::string text = ".TP\n\\fB" + escaped(names) + "\\fR";
    const std::string value = valueOf(option);
    if (!value.empty()) text += " \\fI" + escaped(value) + "\\fR";
    text += '\n' + escaped(option.get_description());
    if (!option.get_default_str().empty()) text += " (default: " + escaped(option.get_default_str()) + ")";
    return text + (option.get_required() ? " (required)\n" : "\n");
}

/// All but the help's own, which every command has and the program's options tell once.
std::string optionTexts(const CLI::App& app) {
    std::string text;
    for (const CLI::Option* option : visibleOptions(app))
        if (option != app.get_help_ptr()) text += optionText(*option);
    return text;
}

std::string commandText(const CLI::App& command) {
    std::string usage;
    for (const CLI::Option* option : visibleOptions(command)) {
        if (!option->get_positional()) continue;
        const std::string name = "\\fI" + escaped(namesOf(*option).front()) + "\\fR";
        usage += option->get_required() ? " " + name : " [" + name + "]";
        if (option->get_items_expected_max() > 1) usage += "...";
    }
    std::string text =
        fmt::format(".SS {}\n.B lenscorrect {}\n[\\fIoptions\\fR]{}\n.PP\n{}.\n", escaped(command.get_name()),
                    escaped(command.get_name()), usage, escaped(command.get_description()));
    text += optionTexts(command);
    const std::string footer = command.get_footer();
    if (const std::size_t start = footer.find_first_not_of('\n'); start != std::string::npos)
        text += ".PP\n.nf\n" + escaped(footer.substr(start)) + "\n.fi\n";
    return text;
}

} // namespace

std::string manPage(const CLI::App& program) {
    const std::string version = program.version();
    std::string text = fmt::format(
        ".TH LENSCORRECT 1 \"\" \"{0}\"\n.SH NAME\nlenscorrect \\- {1}\n"
        ".SH SYNOPSIS\n.B lenscorrect\n\\fIcommand\\fR [\\fIoptions\\fR]\n"
        ".SH OPTIONS\n{2}.SH COMMANDS\n",
        escaped(version), escaped(program.get_description()),
        optionText(*program.get_help_ptr()) + optionTexts(program));
    for (const CLI::App* command : visibleCommands(program)) text += commandText(*command);
    text += ".SH EXIT STATUS\n";
    for (const ExitStatus& status : exitStatuses)
        text += fmt::format(".TP\n.B {}\n{}\n", status.numbers, escaped(status.meaning));
    return text;
}

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
