#pragma once

#include "remapcolor/ValueOptions.h"

#include <filesystem>
#include <vector>

class CommandOptions;

/// The values that a node is asked to have: those of a project, then the settings one by one.
struct NodeRequest {
    std::filesystem::path project;      ///< empty for none: a new node
    std::vector<ValueSetting> settings; ///< in the order of the command line
};

/// Adds the options that fill `request`; it lives longer than `options`. Their handlers throw
/// UsageError.
void addNodeOptions(CommandOptions& options, NodeRequest& request);
