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

/// `; did you mean "NAME"?` with the known name closest to a misspelt one, by the count of letters that are wrong,
/// missing, extra, or swapped with their neighbour; empty if none is close: at most one such slip in three letters. Of
/// several equally close names, the first.
std::string suggestionFor(const std::string& misspelt, const std::vector<std::string>& known);

/// `There is no command "NAME"`, with the name that was probably meant.
std::string noCommandText(const CLI::App& program, const std::string& name);

/// The manual page of a program and all its sub-commands, in the man macros of roff. Hidden options are left out. It is
/// the same on every machine and day, so that builds are reproducible.
std::string manPage(const CLI::App& program);

/// A script for bash that completes the program's commands, their options, the words that an option accepts, and file
/// names wherever a value or a positional is wanted. Hidden options are left out. Loaded by bash-completion, or with
/// `source`.
std::string bashCompletion(const CLI::App& program);

} // namespace Program
