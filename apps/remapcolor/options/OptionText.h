#pragma once

#include "remapcolor/options/CommandOptions.h"
#include "runtime/values/NearestNames.h"
#include "session/Failures.h"

#include <string>
#include <utility>
#include <vector>

/// Words that an option takes, and what they stand for.
template <typename T>
using Words = std::vector<std::pair<std::string, T>>;

/// What `word` stands for; case does not count. Throws UsageError that names the option and all
/// words.
template <typename T>
T chooseWord(std::string const& option, Words<T> const& words, std::string const& word)
{
    std::string list;
    for (auto const& [name, meaning] : words) {
        if (name == toLower(word)) {
            return meaning;
        }
        bool const isLast = name == words.back().first;
        list += (list.empty() ? "" : isLast ? " or " : ", ") + name;
    }
    throw UsageError(option + " takes " + list + ", not " + quote(word));
}

template <typename T>
ValueHint hintWords(Words<T> const& words)
{
    ValueHint hint{ValueHint::Kind::Words};
    for (auto const& [name, meaning] : words) {
        hint.words.push_back(name);
    }
    return hint;
}
