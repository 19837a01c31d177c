#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
class Option;
} // namespace CLI

namespace Program {

/// The command line parser's declarations, in the form that texts are made from. All lists are in the order of
/// declaration, hidden ones left out; options in groups come after the others.
std::vector<const CLI::App*> visibleCommands(const CLI::App& app);
std::vector<const CLI::Option*> visibleOptions(const CLI::App& app);

/// "-h" and "--help", or a positional's "FILE".
std::vector<std::string> namesOf(const CLI::Option& option);

/// Word for an option's value, "WORD"; empty for flags and positionals, whose name says it.
std::string valueOf(const CLI::Option& option);

/// The words that an option accepts, if it accepts only certain ones.
std::vector<std::string> choicesOf(const CLI::Option& option);

/// `There is no command "NAME"`, with the name that was probably meant.
std::string noCommandText(const CLI::App& program, const std::string& name);

} // namespace Program
