// The options for values, which several commands share.

#include "remapcolor/options/NodeRequest.h"

#include "remapcolor/options/CommandOptions.h"
#include "remapcolor/options/OptionText.h"
#include "session/ToolKeys.h"

#include <string>

namespace {

/// The first words of the labels of "Output Depth".
Words<std::string> const depths = {{"8", "8"}, {"16", "16"}, {"32", "32"}, {"input", "input"}};

/// What sets the value of that name.
auto makeSetter(NodeRequest& request, char const* name)
{
    return [&request, name](std::string const& value) {
        request.settings.push_back({ValueSetting::Form::Named, std::string(name) + "=" + value});
    };
}

} // namespace

void addNodeOptions(CommandOptions& options, NodeRequest& request)
{
    options.addOption("-p,--project", "FILE.json",
                      "Start from a saved project's values\n\n"
                      "Several are applied one after the other; options come on top.",
                      [&request](std::string const& text) { request.projects.push_back(text); },
                      {ValueHint::Kind::File});
    options.addOption("-s,--set", "NAME=VALUE",
                      "Set an input, or all members of a group.\n"
                      "Keyframes: NAME=VALUE@TIME,...\n\n"
                      "\"remapcolor describe\" lists the names; case does not matter.",
                      [&request](std::string const& text) {
                          request.settings.push_back({ValueSetting::Form::Named, text});
                      },
                      {ValueHint::Kind::Setting});
    options.addOption("--mode", "MODE", "Linear or EXRDisplay; same as -s Mode=MODE",
                      makeSetter(request, ToolKeys::mode),
                      {ValueHint::Kind::Words, {"Linear", "EXRDisplay"}});
    options.addOption("--curve", "CHANNELS=KEYS",
                      "Curves of red,green,blue or rgb: \"x,y x,y ...\".\n"
                      "Keyframes: \"KEYS @TIME | KEYS @TIME | ...\"\n\n"
                      "Between two keys a curve never leaves their range. With handles KEYS are "
                      "\"hx,hy x,y hx,hy; hx,hy x,y hx,hy; ...\".",
                      [&request](std::string const& text) {
                          request.settings.push_back({ValueSetting::Form::Curves, text});
                      });
    options.addFlag("--no-adjust",
                    "Without curves; same as -s Adjust=false. Even the default\n"
                    "one moves floats, by up to 1.2e-7, and makes NaN 0",
                    [set = makeSetter(request, ToolKeys::adjust)] { set("false"); });
    options.addOption("--mix", "X",
                      "From 0, the source, to 1, the result (default)\n\n"
                      "The same as -s Mix=X.",
                      makeSetter(request, ToolKeys::mix));
}

void addDepthOption(CommandOptions& options, NodeRequest& request)
{
    options.addOption(
        "--depth", "DEPTH", "Bits of a colour component: 8, 16, 32 or input",
        [set = makeSetter(request, ToolKeys::outputDepth)](std::string const& text) {
            set(chooseWord("--depth", depths, text));
        },
        hintWords(depths));
}
