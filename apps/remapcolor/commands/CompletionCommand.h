#pragma once

#include <string>
#include <vector>

/// What the shell asks while somebody types.
struct CompletionRequest {
    std::vector<std::string> words; ///< after the program's name; the last one is being typed
};

/// Prints "files" or "words", and what may stand there: a word a line, and a tab and its
/// description behind it where it has one. Throws ToolLoadError, SurroundingsError.
void runCompletion(CompletionRequest const& request);
