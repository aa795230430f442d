// The options for values, which several commands share.

#include "remapcolor/NodeRequest.h"

#include "remapcolor/CommandOptions.h"
#include "remapcolor/OptionText.h"
#include "remapcolor/ToolKeys.h"

#include <string>

namespace {

int parseDepth(std::string const& text)
{
    Words<int> const depths = {{"8", ToolKeys::depth8},
                               {"16", ToolKeys::depth16},
                               {"32", ToolKeys::depth32},
                               {"input", ToolKeys::depthOfInput}};
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
    options.addOption("-p,--project", "FILE.json", "Start from a saved project's values",
                      [&request](std::string const& text) { request.project = text; });
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
                      "\"hx,hy x,y hx,hy; hx,hy x,y hx,hy; ...\"",
                      [&request](std::string const& text) {
                          request.settings.push_back({ValueSetting::Form::Curves, text});
                      });
    options.addFlag("--no-adjust", "Without adjustment curves; same as -s Adjust=false",
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
                          set(std::to_string(parseDepth(text)));
                      });
}
