// The manual page, from what the command line is parsed with.

#include "remapcolor/options/ProgramManual.h"

#include "runtime/values/TextParts.h"

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace {

/// Text as the markup has it: hyphens stay hyphens, backslashes backslashes, and no line is taken
/// for a request.
std::string escape(std::string_view text)
{
    std::string escaped;
    bool isAtStart = true;
    for (char const character : text) {
        if (isAtStart && (character == '.' || character == '\'')) {
            escaped += "\\&";
        }
        switch (character) {
        case '\\': escaped += "\\e"; break;
        case '-': escaped += "\\-"; break;
        default: escaped += character;
        }
        isAtStart = character == '\n';
    }
    return escaped;
}

std::string asSection(std::string_view title)
{
    return ".SH \"" + std::string(title) + "\"\n";
}

/// Lines that stay as they are.
std::string asIs(std::string_view text)
{
    return ".nf\n" + escape(text) + "\n.fi\n";
}

std::string formatOption(OptionText const& option)
{
    std::string names;
    for (std::string const& name : option.names) {
        names += (names.empty() ? "" : ", ") + std::string(option.isArgument ? "\\fI" : "\\fB") +
                 escape(name) + "\\fR";
    }
    if (!option.placeholder.empty()) {
        names += " \\fI" + escape(option.placeholder) + "\\fR";
    }
    std::size_t const first =
        std::min(option.description.find(manualOnly), option.description.size());
    std::string const rest = option.description.substr(first);
    return ".TP\n" + names + "\n" + escape(option.description.substr(0, first)) + "\n" +
           (rest.empty() ? "" : ".br" + escape(rest.substr(1)) + "\n");
}

/// The examples without their title, and what is said after them.
std::string formatExamples(std::string const& examples)
{
    constexpr std::string_view title = "Examples:\n";
    std::string const text = examples.starts_with(title) ? examples.substr(title.size()) : examples;
    return ".PP\n" + asIs(text);
}

std::string formatCommand(CommandManual const& command)
{
    std::string page = asSection("remapcolor " + command.name) + escape(command.description) +
                       "\n.PP\n.B " + escape(command.usage) + "\n";
    for (OptionText const& option : command.options) {
        page += formatOption(option);
    }
    return page + formatExamples(command.examples);
}

struct Variable {
    char const* name;
    char const* meaning;
};

constexpr Variable variables[] = {
    {"VX_TOOL_PATH", "Folders, separated by colons, in which the tool is looked for first."},
    {"REMAPCOLOR_INSTRUCTIONS",
     "Baseline, Avx2 or Avx512: a lower instruction set than the processor has. The pictures are "
     "the same."},
    {"NO_COLOR", "Nothing is ever coloured; the bar is plain."},
    {"SLURM_CPUS_PER_TASK, SLURM_MEM_PER_NODE, SLURM_MEM_PER_CPU",
     "What a scheduler grants; it bounds the workers and the memory that are taken without \\-j "
     "and \\-\\-memory."},
};

} // namespace

std::string formatManualPage(ProgramManual const& manual)
{
    std::string page = ".TH REMAPCOLOR 1 \"\" \"remapcolor " REMAPCOLOR_VERSION "\"\n" +
                       asSection("NAME") + "remapcolor \\- remap the colours of pictures\n" +
                       asSection("SYNOPSIS") + ".B remapcolor\n.I COMMAND\n[\\fIoptions\\fR]\n" +
                       asSection("DESCRIPTION") + escape(manual.description) + "\n";
    for (CommandManual const& command : manual.commands) {
        page += formatCommand(command);
    }
    page += asSection("EXAMPLES AND EXIT STATUS") + formatExamples(manual.examples) +
            asSection("ENVIRONMENT");
    for (Variable const& variable : variables) {
        page += ".TP\n.B " + std::string(variable.name) + "\n" + variable.meaning + "\n";
    }
    return page;
}
