#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <string>

namespace CLI {
class App;
class Option;
} // namespace CLI

/// The options of one command. What they do is done in the order in which they stand on the command
/// line, so that a later one wins over an earlier one.
class CommandOptions {
public:
    using ValueHandler = std::function<void(std::string const& value)>;
    using FlagHandler = std::function<void()>;

    /// `commandLine` lives longer. `usage` is what follows "Usage: " in the help text; `examples`
    /// end it.
    CommandOptions(CLI::App& commandLine, std::string const& usage, std::string const& examples);

    /// An argument without a name, such as "INPUT". Given once.
    void addArgument(std::string const& name, std::string const& description, ValueHandler handler);

    /// Arguments without a name that stand at the end, one or more; the handler gets each. `name`
    /// as the help text shows it.
    void addArguments(std::string const& name, std::string const& description,
                      ValueHandler handler);

    /// An option with a value, given any number of times. `names` as in "-s,--set"; `placeholder`
    /// stands for the value in the help text.
    void addOption(std::string const& names, std::string const& placeholder,
                   std::string const& description, ValueHandler handler);

    void addFlag(std::string const& names, std::string const& description, FlagHandler handler);

    /// Whether the command was given on the command line that has been parsed.
    bool isChosen() const;

    /// Calls the handlers. Throws UsageError for what is no option of the command, and what the
    /// handlers throw.
    void apply() const;

private:
    void checkLeftovers() const;

    CLI::App& app;
    std::map<CLI::Option const*, ValueHandler> handlers;
};

/// Adds -o,--output, whose handler fills `output`, which lives longer than `options`, and throws
/// UsageError when it comes twice: one of the files would silently not be written.
void addOutputOption(CommandOptions& options, std::string const& placeholder,
                     std::string const& description, std::filesystem::path& output);

/// Gives a command line our way of showing help. Parameters as those of CommandOptions.
void setHelp(CLI::App& commandLine, std::string const& usage, std::string const& examples);
