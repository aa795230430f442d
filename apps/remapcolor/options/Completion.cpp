// What the shell offers, from what the command line is parsed with.

#include "remapcolor/options/Completion.h"

#include "runtime/values/NearestNames.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace {

using TypedWords = std::vector<std::string>;
using Candidates = std::vector<Completion::Candidate>;

std::string takeFirstLine(std::string const& text)
{
    return text.substr(0, text.find('\n'));
}

/// Case does not count, as in the options' values.
void keepWhatBegins(Candidates& candidates, std::string const& typed)
{
    std::erase_if(candidates, [&](Completion::Candidate const& candidate) {
        return !toLower(candidate.text).starts_with(toLower(typed));
    });
}

Completion completeCommand(ProgramManual const& manual, std::string const& typed)
{
    Completion completion;
    for (CommandManual const& command : manual.commands) {
        completion.candidates.push_back({command.name, command.description});
    }
    completion.candidates.push_back({"--help", "Print help"});
    completion.candidates.push_back({"--version", "Print the program's version"});
    keepWhatBegins(completion.candidates, typed);
    return completion;
}

/// One command's words.
class CommandCompletion {
public:
    CommandCompletion(CommandManual const& itsCommand, SettingCompleter const& completer)
        : command(itsCommand), completeSetting(completer)
    {
    }

    /// `words` begin with the command's name.
    Completion complete(TypedWords const& words) const
    {
        std::string const& typed = words.back();
        OptionText const* awaiting = nullptr;
        bool hasOptionsEnded = false;
        std::size_t nbArguments = 0;
        for (std::size_t index = 1; index + 1 < words.size(); ++index) {
            std::string const& word = words[index];
            if (awaiting != nullptr) {
                awaiting = nullptr;
            } else if (word == "--" && !hasOptionsEnded) {
                hasOptionsEnded = true;
            } else if (hasOptionsEnded || !word.starts_with("-")) {
                ++nbArguments;
            } else {
                awaiting = findAwaiting(word);
            }
        }
        if (awaiting != nullptr) {
            return completeValue(awaiting->hint, "", typed);
        }
        if (hasOptionsEnded || !typed.starts_with("-")) {
            OptionText const* const argument = findArgument(nbArguments);
            return argument == nullptr ? Completion() : completeValue(argument->hint, "", typed);
        }
        return completeOption(typed);
    }

private:
    /// The option of that name if its value is the next word.
    OptionText const* findAwaiting(std::string const& name) const
    {
        auto const found = std::find_if(
            command.options.begin(), command.options.end(), [&](OptionText const& option) {
                return !option.placeholder.empty() && option.isCalled(name);
            });
        return found == command.options.end() ? nullptr : &*found;
    }

    /// The last argument may come several times.
    OptionText const* findArgument(std::size_t index) const
    {
        OptionText const* last = nullptr;
        for (OptionText const& option : command.options) {
            if (option.isArgument) {
                last = &option;
                if (index-- == 0) {
                    break;
                }
            }
        }
        return last;
    }

    Completion completeOption(std::string const& typed) const
    {
        std::size_t const equals = typed.find('=');
        if (equals != std::string::npos) {
            OptionText const* const option = findAwaiting(typed.substr(0, equals));
            return option == nullptr ? Completion()
                                     : completeValue(option->hint, typed.substr(0, equals + 1),
                                                     typed.substr(equals + 1));
        }
        Completion completion;
        for (OptionText const& option : command.options) {
            if (!option.isArgument) {
                completion.candidates.push_back(
                    {option.names.back(), takeFirstLine(option.description)});
            }
        }
        completion.candidates.push_back({"--help", "Print this command's help"});
        keepWhatBegins(completion.candidates, typed);
        return completion;
    }

    Completion completeValue(ValueHint const& hint, std::string const& before,
                             std::string const& typed) const
    {
        Completion completion;
        switch (hint.kind) {
        case ValueHint::Kind::Free: break;
        case ValueHint::Kind::File: completion.takesFile = true; break;
        case ValueHint::Kind::Words:
            for (std::string const& word : hint.words) {
                completion.candidates.push_back({word, ""});
            }
            break;
        case ValueHint::Kind::Setting: completion.candidates = completeSetting(typed); break;
        }
        keepWhatBegins(completion.candidates, typed);
        for (Completion::Candidate& candidate : completion.candidates) {
            candidate.text.insert(0, before);
        }
        return completion;
    }

    CommandManual const& command;
    SettingCompleter const& completeSetting;
};

} // namespace

Completion completeWords(ProgramManual const& manual, std::vector<std::string> const& words,
                         SettingCompleter const& completeSetting)
{
    if (words.size() < 2) {
        return completeCommand(manual, words.empty() ? std::string() : words.front());
    }
    for (CommandManual const& command : manual.commands) {
        if (command.name == words.front()) {
            return CommandCompletion(command, completeSetting).complete(words);
        }
    }
    return {};
}
