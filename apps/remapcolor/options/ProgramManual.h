#pragma once

#include "remapcolor/options/CommandOptions.h"

#include <string>
#include <vector>

/// A command as people read of it.
struct CommandManual {
    std::string name;
    std::string description;
    std::string usage;
    std::string examples;
    std::vector<OptionText> options;
};

/// All that there is to say about the command line: what parses it, as texts.
struct ProgramManual {
    std::string description;
    std::string examples;
    std::vector<CommandManual> commands;
};

/// The program's manual as a page for man, in its markup.
std::string formatManualPage(ProgramManual const& manual);
