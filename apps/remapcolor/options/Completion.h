#pragma once

#include "remapcolor/options/ProgramManual.h"

#include <functional>
#include <string>
#include <vector>

/// What may stand where somebody types.
struct Completion {
    struct Candidate {
        std::string text; ///< the whole word; ends in "=" where a value follows
        std::string description;
    };

    std::vector<Candidate> candidates; ///< all that begin as the word does
    bool takesFile = false;            ///< a file's name may stand here
};

/// Gives what NAME=VALUE may be, for what has been typed of it.
using SettingCompleter =
    std::function<std::vector<Completion::Candidate>(std::string const& typed)>;

/// What the last of `words` may become; the program's name is not among them. `completeSetting` is
/// asked only where an input of the tool stands.
Completion completeWords(ProgramManual const& manual, std::vector<std::string> const& words,
                         SettingCompleter const& completeSetting);
