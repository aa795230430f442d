// Options of a command, and how its help text shows them.

#include "remapcolor/options/CommandOptions.h"

#include "runtime/values/NearestNames.h"
#include "runtime/values/TextParts.h"
#include "session/Failures.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

namespace {

constexpr std::size_t helpColumn = 30; // where descriptions begin

/// Usage, what the command does, its options in two columns, examples.
class HelpFormatter : public CLI::Formatter {
public:
    explicit HelpFormatter(std::string usageText) : usage(std::move(usageText))
    {
        column_width(helpColumn);
    }

    std::string make_help(CLI::App const* app, std::string /*name*/,
                          CLI::AppFormatMode mode) const override
    {
        return "Usage: " + usage + "\n\n" + app->get_description() + "\n" + make_positionals(app) +
               make_subcommands(app, mode) + make_groups(app, mode) + "\n" + make_footer(app);
    }

    std::string make_option_desc(CLI::Option const* option) const override
    {
        std::string const& description = option->get_description();
        return description.substr(0, description.find(manualOnly));
    }

    std::string make_option_name(CLI::Option const* option, bool isPositional) const override
    {
        if (isPositional) {
            return option->get_name(true, false);
        }
        std::string name = option->get_snames().empty() ? "    " : "-" + option->get_snames()[0];
        if (!option->get_lnames().empty()) {
            name += (option->get_snames().empty() ? "--" : ", --") + option->get_lnames()[0];
        }
        return name;
    }

private:
    std::string usage;
};

std::vector<std::string> splitNames(std::string const& names)
{
    std::vector<std::string> parts;
    for (std::string_view const name : split(names, ',')) {
        parts.emplace_back(name);
    }
    return parts;
}

/// "--set" and the like of all options.
std::vector<std::string> listOptions(CLI::App const& app)
{
    std::vector<std::string> names;
    for (CLI::Option const* const option : app.get_options()) {
        for (std::string const& name : option->get_lnames()) {
            names.push_back("--" + name);
        }
    }
    return names;
}

} // namespace

void setHelp(CLI::App& commandLine, std::string const& usage, std::string const& examples)
{
    auto const formatter = std::make_shared<HelpFormatter>(usage);
    formatter->label("Positionals", "Arguments");
    commandLine.formatter(formatter);
    commandLine.footer(examples);
}

void addOutputOption(CommandOptions& options, std::string const& placeholder,
                     std::string const& description, std::filesystem::path& output)
{
    options.addOption("-o,--output", placeholder, description,
                      [&output](std::string const& text) {
                          if (!output.empty()) {
                              throw UsageError("two outputs, " + quote(output.string()) + " and " +
                                               quote(text) + "; give -o once");
                          }
                          output = text;
                      },
                      {ValueHint::Kind::File});
}

CommandOptions::CommandOptions(CLI::App& commandLine, std::string const& usage,
                               std::string const& examples)
    : app(commandLine)
{
    setHelp(app, usage, examples);
    // Reported by ourselves, with what was probably meant.
    app.allow_extras();
}

bool OptionText::isCalled(std::string const& name) const
{
    return std::find(names.begin(), names.end(), name) != names.end();
}

void CommandOptions::addArgument(std::string const& name, std::string const& description,
                                 ValueHandler handler, ValueHint hint)
{
    texts.push_back({{name}, "", description, std::move(hint), true});
    CLI::Option* const option = app.add_option(name, CLI::callback_t(), description);
    option->option_text(" ");
    handlers.emplace(option, std::move(handler));
}

void CommandOptions::addArguments(std::string const& name, std::string const& description,
                                  ValueHandler handler)
{
    texts.push_back({{name}, "", description, {}, true});
    CLI::Option* const option = app.add_option(name, CLI::callback_t(), description);
    option->option_text(" ");
    option->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)->expected(-1);
    handlers.emplace(option, std::move(handler));
}

void CommandOptions::addOption(std::string const& names, std::string const& placeholder,
                               std::string const& description, ValueHandler handler, ValueHint hint)
{
    texts.push_back({splitNames(names), placeholder, description, std::move(hint)});
    CLI::Option* const option = app.add_option(names, CLI::callback_t(), description);
    option->option_text(placeholder);
    option->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)->allow_extra_args(false);
    handlers.emplace(option, std::move(handler));
}

void CommandOptions::addFlag(std::string const& names, std::string const& description,
                             FlagHandler handler)
{
    texts.push_back({splitNames(names), "", description, {}});
    CLI::Option* const option = app.add_flag(names, description)->disable_flag_override();
    handlers.emplace(option, [handler = std::move(handler)](std::string const&) { handler(); });
}

bool CommandOptions::isChosen() const
{
    return app.parsed();
}

void CommandOptions::apply() const
{
    checkLeftovers();
    std::map<CLI::Option const*, std::size_t> nbApplied;
    for (CLI::Option const* const option : app.parse_order()) {
        auto const handler = handlers.find(option);
        if (handler != handlers.end()) {
            handler->second(option->results().at(nbApplied[option]++));
        }
    }
}

void CommandOptions::checkLeftovers() const
{
    for (std::string const& leftover : app.remaining()) {
        std::string const help = "see \"remapcolor " + app.get_name() + " --help\"";
        if (leftover == "--") {
            continue;
        }
        if (leftover.starts_with("--")) {
            std::string const name = leftover.substr(0, leftover.find('='));
            throw UsageError("there is no option " + quote(name) +
                             suggestNames(name, listOptions(app), help));
        }
        if (leftover.starts_with("-")) {
            throw UsageError("there is no option " + quote(leftover) + "; " + help);
        }
        std::error_code ignored;
        if (std::filesystem::exists(leftover, ignored)) { // a shell's pattern, more often than not
            throw UsageError("unexpected argument " + quote(leftover) +
                             "; one input at a time: a sequence is one name in quotes, such as "
                             "\"shot.####.exr\"");
        }
        throw UsageError("unexpected argument " + quote(leftover) +
                         "; put quotes around names and values that hold spaces, or " + help);
    }
}
