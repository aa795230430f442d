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

/// "a, b or c"
template <typename T>
std::string listWords(Words<T> const& words)
{
    std::string list;
    for (auto const& word : words) {
        list += (list.empty() ? "" : &word == &words.back() ? " or " : ", ") + word.first;
    }
    return list;
}

/// What `word` stands for; case does not count. Throws UsageError that names the option and all
/// words.
template <typename T>
T chooseWord(std::string const& option, Words<T> const& words, std::string const& word)
{
    for (auto const& [name, meaning] : words) {
        if (name == toLower(word)) {
            return meaning;
        }
    }
    throw UsageError(option + " takes " + listWords(words) + ", not " + quote(word));
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
