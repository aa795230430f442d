// The program's commands.

#include "remapcolor/options/CommandLine.h"

#include "remapcolor/options/CommandOptions.h"
#include "runtime/values/NearestNames.h"
#include "session/Failures.h"

#include <CLI/CLI.hpp>
#include <optional>
#include <utility>
#include <vector>

namespace {

constexpr char const* helpFlag = "-h,--help";
constexpr char const* helpDescription = "Print this help";
constexpr char const* versionFlag = "--version";

constexpr char const* programExamples =
    "Examples:\n"
    "  remapcolor render in.exr -o out.exr --mode EXRDisplay -s EXRDisplay.Exposure=1.5\n"
    "  remapcolor pick in.exr 12,40 --mode EXRDisplay\n"
    "  remapcolor describe\n"
    "  remapcolor render --help\n"
    "\n"
    "Exit status: 0 done; 1 pictures failed; 2 the command line is wrong, nothing was\n"
    "written; 3 disk, permission, memory or installation failed; 130, 143 stopped by a signal.";

constexpr char const* renderExamples =
    "Examples:\n"
    "  remapcolor render in.exr -o out.png --mode EXRDisplay --depth 8 \\\n"
    "      -s EXRDisplay.Exposure=1.5 -s \"EXRDisplay.Knee High=4\"\n"
    "  remapcolor render shot.####.exr -o out/shot.####.exr -p look.json -f 1-100\n"
    "  remapcolor render in.exr -o out.exr -p look.json --mask matte.png --mix 0.5\n"
    "  remapcolor render in.png -o out.exr --depth 16    (EXR holds no 8-bit channels)\n"
    "\n"
    "\"remapcolor describe\" lists all inputs; \"man remapcolor\" says more of each option.";

constexpr char const* pickExamples =
    "Examples:\n"
    "  remapcolor pick in.exr 12,40 40,40 100,100,16,16\n"
    "  remapcolor pick in.exr 12,40 --mode EXRDisplay -s EXRDisplay.Exposure=1.5\n"
    "  remapcolor pick in.exr -8,0 -p look.json -f 24 --json\n"
    "\n"
    "The values are those of the picture and those that \"remapcolor render --depth 32\" makes\n"
    "of them. Areas show mean, least and greatest of the finite values, and count NaN and inf.";

constexpr char const* describeExamples = "Examples:\n"
                                         "  remapcolor describe\n"
                                         "  remapcolor describe | grep -i exposure\n"
                                         "  remapcolor describe --json > remap-color.json";

constexpr char const* lutExamples =
    "Examples:\n"
    "  remapcolor lut -o look.clf -p look.json\n"
    "  remapcolor lut -o look.clf --mode EXRDisplay -s EXRDisplay.Exposure=1.5\n"
    "  remapcolor lut -o look.cube -s Linear.Gamma=2.2 --domain 0,4 --size 16384\n"
    "  remapcolor lut -o look.spi1d -p look.json --frame 12\n"
    "\n"
    "A .clf has the result of every half, exact for pictures of halves. Alpha, masks and\n"
    "keyframes are in no table.";

constexpr char const* plotExamples =
    "Examples:\n"
    "  remapcolor plot -o look.svg -s Linear.Gamma=2.2 --curve \"rgb=0,0 0.5,0.65 1,1\"\n"
    "  remapcolor plot in.exr -o look.png -p look.json --stops -8,6\n"
    "  remapcolor plot in.exr -o look.png --mode EXRDisplay --range 0,16 --frame 12\n"
    "\n"
    "Three panels: the mode's transfer, the adjustment curves with keys and handles, and\n"
    "both together, which is what render does.";

constexpr char const* checkExamples =
    "Examples:\n"
    "  remapcolor check shot.####.exr\n"
    "  remapcolor check shot.####.exr -f 1001-1100 --values --json\n"
    "\n"
    "Wrong are frames that are missing, cannot be read to the end, have other windows,\n"
    "channels or parts than most, and with --values such with NaN or infinity. Status 1 then.";

constexpr char const* infoExamples =
    "Examples:\n"
    "  remapcolor info in.exr\n"
    "  remapcolor info shot/*.exr --json\n"
    "\n"
    "Parts, channels with types and sampling, windows, compression and attributes; of EXR files\n"
    "the headers only are read.";

constexpr char const* projectExamples =
    "Examples:\n"
    "  remapcolor project -o look.json --mode EXRDisplay -s EXRDisplay.Exposure=0@1,2@24\n"
    "  remapcolor project -p look.json -o look.json -s EXRDisplay.Gamma=2.4\n"
    "  remapcolor project -p look.json --openfx look-ofx.json\n"
    "  remapcolor render in.0012.exr -o out.exr -p look.json --frame 12";

/// What the command-line library found wrong, in our words.
[[noreturn]] void throwWrongOption(CLI::ParseError const& error, std::string const& command)
{
    std::string const text = error.what();
    std::string const help = "; see \"remapcolor " + command + " --help\"";
    if (dynamic_cast<CLI::ArgumentMismatch const*>(&error) == nullptr) {
        throw UsageError(text + help);
    }
    std::string const name = text.substr(0, text.find_first_of(": "));
    std::string const option = name.starts_with("-") ? name : "--" + name;
    bool const needsValue = text.starts_with(name + ": 1 required");
    throw UsageError(option + (needsValue ? " needs a value after it" : " takes no value") + help);
}

/// Nothing can be missing.
void checkComplete(DescribeRequest const&) {}

/// A command of a program: what people read of it, and what adds its options.
template <typename CommandRequest>
struct Definition {
    CLI::App& program;
    char const* name;
    char const* description;
    char const* usage;
    char const* examples;
    void (*addOptions)(CommandOptions&, CommandRequest&);
};

/// A command, its options, and what it is asked to do.
template <typename CommandRequest>
class Command {
public:
    Command(Definition<CommandRequest> const& commandDefinition)
        : definition(commandDefinition),
          options(addToProgram(), definition.usage, definition.examples)
    {
        definition.addOptions(options, request);
    }
    Command(Command const&) = delete;

    /// Fills `found` if this is the command of the command line.
    void takeIfChosen(std::optional<Request>& found)
    {
        if (options.isChosen()) {
            options.apply();
            checkComplete(request);
            found = std::move(request);
        }
    }

    CommandManual getManual() const
    {
        return {definition.name, definition.description, definition.usage, definition.examples,
                options.getTexts()};
    }

private:
    CLI::App& addToProgram() const
    {
        CLI::App* const command =
            definition.program.add_subcommand(definition.name, definition.description);
        command->group("Commands")->set_help_flag(helpFlag, helpDescription);
        return *command;
    }

    Definition<CommandRequest> const definition;
    CommandRequest request;
    CommandOptions options;
};

/// All commands, for one command line.
class CommandLine {
public:
    CommandLine()
    {
        setHelp(app, "remapcolor COMMAND [options]", programExamples);
        app.set_help_flag(helpFlag, helpDescription);
        app.set_version_flag(versionFlag, "remapcolor " REMAPCOLOR_VERSION,
                             "Print the program's version");
        app.allow_extras();
        app.require_subcommand(0, 1);
    }
    CommandLine(CommandLine const&) = delete;

    Request parse(int nbArguments, char const* const* arguments)
    {
        try {
            app.parse(nbArguments, arguments);
        } catch (CLI::CallForHelp const&) {
            return PrintRequest{app.help()};
        } catch (CLI::CallForVersion const&) {
            return PrintRequest{app.version() + "\n"};
        } catch (CLI::ParseError const& error) {
            throwWrongOption(error, getCommandName());
        }
        checkCommand();
        std::optional<Request> found;
        forEachCommand([&found](auto& command) { command.takeIfChosen(found); });
        return std::move(found.value());
    }

    ProgramManual getManual()
    {
        ProgramManual manual{app.get_description(), programExamples, {}};
        forEachCommand(
            [&manual](auto const& command) { manual.commands.push_back(command.getManual()); });
        return manual;
    }

private:
    template <typename Action>
    void forEachCommand(Action const& act)
    {
        act(render);
        act(pick);
        act(describe);
        act(project);
        act(info);
        act(check);
        act(lut);
        act(plot);
    }

    /// The command that the command line names; "COMMAND" where it names none.
    std::string getCommandName() const
    {
        auto const given = app.get_subcommands();
        return given.empty() ? "COMMAND" : given.front()->get_name();
    }

    /// Throws UsageError unless a command was given, and nothing before it.
    void checkCommand() const
    {
        std::vector<std::string> const leftovers = app.remaining();
        if (leftovers.empty()) {
            if (app.get_subcommands().empty()) {
                throw UsageError("a command is missing; see \"remapcolor --help\"");
            }
            return;
        }
        std::string const& first = leftovers.front();
        if (first.starts_with("-")) {
            throw UsageError("unexpected " + quote(first) +
                             " before the command; write remapcolor COMMAND [options]");
        }
        std::vector<std::string> names;
        for (CLI::App const* const command : app.get_subcommands({})) {
            names.push_back(command->get_name());
        }
        throw UsageError("there is no command " + quote(first) +
                         suggestNames(first, names, "see \"remapcolor --help\""));
    }

    CLI::App app{"Remaps the colours of pictures: levels, gamma, exposure, knee, curves."};
    // In the order of the help text.
    Command<RenderRequest> render{{app, "render", "Send a picture or a sequence through the tool.",
                                   "remapcolor render INPUT -o OUTPUT [options]", renderExamples,
                                   &addRenderOptions}};
    Command<PickRequest> pick{{app, "pick", "Send pixels and areas of a picture through the tool.",
                               "remapcolor pick INPUT X,Y|X,Y,W,H... [options]", pickExamples,
                               &addPickOptions}};
    Command<DescribeRequest> describe{{app, "describe", "List the tool's inputs.",
                                       "remapcolor describe [options]", describeExamples,
                                       &addDescribeOptions}};
    Command<ProjectRequest> project{{app, "project", "Save values as a project.",
                                     "remapcolor project -o OUT.json [--openfx OUT.json] [options]",
                                     projectExamples, &addProjectOptions}};
    Command<InfoRequest> info{{app, "info", "Show what pictures say of themselves.",
                               "remapcolor info INPUT... [options]", infoExamples,
                               &addInfoOptions}};
    Command<CheckRequest> check{
        {app, "check", "Read a sequence fully and tell what is wrong with it.",
         "remapcolor check INPUT [options]", checkExamples, &addCheckOptions}};
    Command<LutRequest> lut{{app, "lut", "Save the whole chain as a table.",
                             "remapcolor lut -o OUT.clf|.cube|.spi1d [options]", lutExamples,
                             &addLutOptions}};
    Command<PlotRequest> plot{{app, "plot", "Draw the transfer, the curves and both together.",
                               "remapcolor plot [INPUT] -o OUT.svg|.png [options]", plotExamples,
                               &addPlotOptions}};
};

} // namespace

Request parseCommandLine(int nbArguments, char const* const* arguments)
{
    std::string_view const command = nbArguments > 1 ? arguments[1] : "";
    if (command == "complete") {
        return CompletionRequest{{arguments + 2, arguments + nbArguments}};
    }
    if (command == "manual" && nbArguments == 2) {
        return PrintRequest{formatManualPage(getProgramManual())};
    }
    return CommandLine().parse(nbArguments, arguments);
}

ProgramManual getProgramManual()
{
    return CommandLine().getManual();
}
