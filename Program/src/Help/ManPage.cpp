#include "Help/ManPage.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>

#include "Help/Declarations.h"

namespace Program {

namespace {

constexpr const char* exitStatus =
    ".SH EXIT STATUS\n"
    ".TP\n.B 0\nSuccess: every frame was written or was already finished.\n"
    ".TP\n.B 1\nSome frames failed and are listed; the others are written.\n"
    ".TP\n.B 2\nUsage error: unusable options, frame ranges, patterns or input files.\n"
    ".TP\n.B 3\nNo OpenCL device, or unusable kernel cache.\n"
    ".TP\n.B 4\nOutput could not be written.\n"
    ".TP\n.BR 130 \", \" 143\nStopped by SIGINT or SIGTERM; no partial file has a final name.\n";

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
    return text + exitStatus;
}

} // namespace Program
