#include "Help/Declarations.h"

#include <CLI/CLI.hpp>

#include "Suggestion.h"

namespace Program {

namespace {

/// The type's name followed by the accepted words: "TEXT:{half,float}".
std::string typeOf(const CLI::Option& option) { return option.get_type_name(); }

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

std::string noCommandText(const CLI::App& program, const std::string& name) {
    std::vector<std::string> names;
    for (const CLI::App* command : visibleCommands(program)) names.push_back(command->get_name());
    return "There is no command \"" + name + '"' + suggestionFor(name, names);
}

} // namespace Program
