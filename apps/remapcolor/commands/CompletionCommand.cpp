// What the shell's completion asks for.

#include "remapcolor/commands/CompletionCommand.h"

#include "remapcolor/options/CommandLine.h"
#include "remapcolor/options/Completion.h"
#include "remapcolor/reports/StandardStreams.h"
#include "remapcolor/text/ValueText.h"
#include "runtime/graph/ValueNames.h"
#include "session/ToolSession.h"

namespace {

using Candidates = std::vector<Completion::Candidate>;

/// What one value may be: words for switches and choices, nothing for numbers and curves.
std::vector<std::string> listWords(HostValue const& value)
{
    if (auto const* const choices = dynamic_cast<PiEnumPolicy const*>(value.getPolicy().get())) {
        std::vector<std::string> labels;
        for (PiEnumPolicy::Pair const& choice : choices->getPairs()) {
            labels.push_back(choice.second);
        }
        return labels;
    }
    bool const isSwitch = std::holds_alternative<Animated<bool>>(*value.getState());
    return isSwitch ? std::vector<std::string>{"true", "false"} : std::vector<std::string>();
}

Candidates completeSetting(std::string const& typed)
{
    ToolSession const session;
    HostNode const& node = session.getNode();
    Candidates candidates;
    std::size_t const equals = typed.find('=');
    if (equals == std::string::npos) {
        for (std::string const& name : listValueNames(node)) {
            candidates.push_back({name + "=", ""});
        }
        return candidates;
    }
    std::string const name = typed.substr(0, equals);
    ValueSlots const slots = findValues(node, name);
    if (!slots.empty()) {
        for (std::string const& word : listWords(*slots.front().value)) {
            candidates.push_back({name + "=" + word, ""});
        }
    }
    return candidates;
}

} // namespace

void runCompletion(CompletionRequest const& request)
{
    Completion const completion =
        completeWords(getProgramManual(), request.words, &completeSetting);
    std::string text = completion.takesFile ? "files\n" : "words\n";
    for (auto const& [word, description] : completion.candidates) {
        text += word + (description.empty() ? "" : "\t" + description) + "\n";
    }
    writeStandardOutput(text);
}
