// "project": values into a project file.

#include "remapcolor/ProjectCommand.h"

#include "remapcolor/CommandOptions.h"
#include "remapcolor/Failures.h"
#include "remapcolor/NearestNames.h"
#include "remapcolor/ProjectFiles.h"
#include "remapcolor/ToolSession.h"

void addProjectOptions(CommandOptions& options, ProjectRequest& request)
{
    options.addOption("-o,--output", "OUT.json", "Project file to write",
                      [&request](std::string const& text) { request.output = text; });
    addNodeOptions(options, request.node);
    addDepthOption(options, request.node);
}

void checkComplete(ProjectRequest const& request)
{
    if (request.output.empty()) {
        throw UsageError("project needs a file to write; add -o OUT.json");
    }
    // A picture whose name slipped in here must not be lost.
    if (toLower(request.output.extension().string()) != ".json") {
        throw UsageError("cannot write the project " + quote(request.output.string()) +
                         ": its name must end in .json");
    }
}

void runProject(ProjectRequest const& request)
{
    ToolSession const session(request.node);
    saveProject(request.output, session.getNode());
}
