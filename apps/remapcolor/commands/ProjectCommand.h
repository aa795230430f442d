#pragma once

#include "remapcolor/options/NodeRequest.h"

#include "remapcolor/reports/Reporter.h"

#include <filesystem>

/// What "project" is asked to do.
struct ProjectRequest {
    std::filesystem::path output; ///< a project; empty for none
    std::filesystem::path openFx; ///< a look for OpenFX hosts; empty for none
    NodeRequest node;
};

/// Adds the options of "project", which fill `request`; it lives longer than `options`.
void addProjectOptions(CommandOptions& options, ProjectRequest& request);

/// Throws UsageError unless `request` names a project file to write.
void checkComplete(ProjectRequest const& request);

/// Saves all values of a node as it is asked for. Throws UsageError, ValueError, SurroundingsError,
/// ToolLoadError; the file is then as it was.
void runProject(ProjectRequest const& request, Reporter& reporter);
