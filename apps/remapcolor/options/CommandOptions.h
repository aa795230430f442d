#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace CLI {
class App;
class Option;
} // namespace CLI

/// What the value of an option or an argument may be, for the shell's completion and the manual.
struct ValueHint {
    enum class Kind {
        Free,    ///< nothing to offer
        File,    ///< any file
        Words,   ///< one of `words`
        Setting, ///< NAME=VALUE for an input of the tool
    };

    Kind kind = Kind::Free;
    std::vector<std::string> words{};
};

/// In a description: what follows is in the manual and not in the help text, which is one screen.
inline constexpr char const* manualOnly = "\n\n";

/// An option or an argument as people read of it.
struct OptionText {
    std::vector<std::string> names; ///< "-s" and "--set"; of an argument its name alone
    std::string placeholder;        ///< for the value; empty for flags
    std::string description;
    ValueHint hint;
    bool isArgument = false;

    bool isCalled(std::string const& name) const;
};

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
    void addArgument(std::string const& name, std::string const& description, ValueHandler handler,
                     ValueHint hint = {ValueHint::Kind::File});

    /// Arguments without a name that stand at the end, one or more; the handler gets each. `name`
    /// as the help text shows it.
    void addArguments(std::string const& name, std::string const& description,
                      ValueHandler handler);

    /// An option with a value, given any number of times. `names` as in "-s,--set"; `placeholder`
    /// stands for the value in the help text.
    void addOption(std::string const& names, std::string const& placeholder,
                   std::string const& description, ValueHandler handler, ValueHint hint = {});

    void addFlag(std::string const& names, std::string const& description, FlagHandler handler);

    /// Arguments and options in the order in which the help text shows them.
    std::vector<OptionText> const& getTexts() const { return texts; }

    /// Whether the command was given on the command line that has been parsed.
    bool isChosen() const;

    /// Calls the handlers. Throws UsageError for what is no option of the command, and what the
    /// handlers throw.
    void apply() const;

private:
    void checkLeftovers() const;

    CLI::App& app;
    std::map<CLI::Option const*, ValueHandler> handlers;
    std::vector<OptionText> texts;
};

/// Adds -o,--output, whose handler fills `output`, which lives longer than `options`, and throws
/// UsageError when it comes twice: one of the files would silently not be written.
void addOutputOption(CommandOptions& options, std::string const& placeholder,
                     std::string const& description, std::filesystem::path& output);

/// Gives a command line our way of showing help. Parameters as those of CommandOptions.
void setHelp(CLI::App& commandLine, std::string const& usage, std::string const& examples);
