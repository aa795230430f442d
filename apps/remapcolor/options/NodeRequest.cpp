// The options for values, which several commands share.

#include "remapcolor/options/NodeRequest.h"

#include "remapcolor/options/CommandOptions.h"
#include "remapcolor/options/OptionText.h"
#include "remapcolor/session/ToolKeys.h"

#include <string>

namespace {

/// The first word of a label of "Output Depth".
std::string parseDepth(std::string const& text)
{
    Words<std::string> const depths = {{"8", "8"}, {"16", "16"}, {"32", "32"}, {"input", "input"}};
    return chooseWord("--depth", depths, text);
}

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
                      "Start from a saved project's values; several are\n"
                      "applied one after the other",
                      [&request](std::string const& text) { request.projects.push_back(text); });
    options.addOption("-s,--set", "NAME=VALUE",
                      "Set any input by its full name; a group's name sets\n"
                      "all its members. Keyframes: NAME=VALUE@TIME,...",
                      [&request](std::string const& text) {
                          request.settings.push_back({ValueSetting::Form::Named, text});
                      });
    options.addOption("--mode", "MODE", "Linear or EXRDisplay; same as -s Mode=MODE",
                      makeSetter(request, ToolKeys::mode));
    options.addOption("--curve", "CHANNELS=KEYS",
                      "Adjustment curve of red,green,blue or rgb. KEYS are\n"
                      "\"x,y x,y ...\" (smooth), or with handles\n"
                      "\"hx,hy x,y hx,hy; hx,hy x,y hx,hy; ...\".\n"
                      "Keyframes: \"KEYS @TIME | KEYS @TIME | ...\"",
                      [&request](std::string const& text) {
                          request.settings.push_back({ValueSetting::Form::Curves, text});
                      });
    options.addFlag("--no-adjust",
                    "Without adjustment curves; same as -s Adjust=false.\n"
                    "Even the default curve moves floats, by up to 1.2e-7,\n"
                    "and makes NaN 0; this leaves them as they are",
                    [set = makeSetter(request, ToolKeys::adjust)] { set("false"); });
    options.addOption("--mix", "X",
                      "From 0, the source, to 1, the tool's result (default);\n"
                      "same as -s Mix=X",
                      makeSetter(request, ToolKeys::mix));
}

void addDepthOption(CommandOptions& options, NodeRequest& request)
{
    options.addOption("--depth", "DEPTH", "Bits of a colour component: 8, 16, 32 or input",
                      [set = makeSetter(request, ToolKeys::outputDepth)](std::string const& text) {
                          set(parseDepth(text));
                      });
}
