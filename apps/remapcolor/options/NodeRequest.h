#pragma once

#include "remapcolor/options/ValueOptions.h"

#include <filesystem>
#include <vector>

class CommandOptions;

/// The values that a node is asked to have: those of the projects, then the settings one by one.
struct NodeRequest {
    std::vector<std::filesystem::path> projects; ///< in the order of the command line
    std::vector<ValueSetting> settings;          ///< in the order of the command line
};

/// Adds the options that fill `request`; it lives longer than `options`. Their handlers throw
/// UsageError.
void addNodeOptions(CommandOptions& options, NodeRequest& request);

/// The same for --depth, for commands whose result depends on it.
void addDepthOption(CommandOptions& options, NodeRequest& request);
