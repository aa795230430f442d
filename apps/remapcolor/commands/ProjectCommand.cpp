// "project": values into a project file.

#include "remapcolor/commands/ProjectCommand.h"

#include "remapcolor/commands/OpenFxLook.h"
#include "remapcolor/options/CommandOptions.h"
#include "remapcolor/options/StandardFileOptions.h"
#include "remapcolor/reports/StandardStreams.h"
#include "remapcolor/session/LookNotes.h"
#include "remapcolor/session/RequestedSession.h"
#include "remapcolor/session/StopSignals.h"
#include "runtime/values/NearestNames.h"
#include "session/Failures.h"
#include "session/ProjectFiles.h"

#include <string>
#include <utility>

void addProjectOptions(CommandOptions& options, ProjectRequest& request)
{
    addOutputOption(options, "OUT.json", "Project file to write\n\n- is standard output.",
                    request.output);
    options.addOption("--openfx", "OUT.json", "Values for the OpenFX plug-in (docs/openfx.md)",
                      [&request](std::string const& text) { request.openFx = text; },
                      {ValueHint::Kind::File});
    addNodeOptions(options, request.node);
    addDepthOption(options, request.node);
}

void checkComplete(ProjectRequest const& request)
{
    if (request.output.empty() && request.openFx.empty()) {
        throw UsageError("project needs a file to write; add -o OUT.json");
    }
    // A picture whose name slipped in here must not be lost.
    for (auto const& [kind, file] :
         {std::pair("project", request.output), std::pair("OpenFX look", request.openFx)}) {
        if (!file.empty() && !isStandardStream(file) &&
            toLower(file.extension().string()) != ".json") {
            throw UsageError(std::string("cannot write the ") + kind + " " + quote(file.string()) +
                             ": its name must end in .json");
        }
    }
    if (request.output == request.openFx) {
        throw UsageError("-o and --openfx name the same file; give each its own");
    }
    checkStandardInput(request.node, {});
}

void runProject(ProjectRequest const& request, Reporter& reporter)
{
    StopSignals const signals;
    RequestedSession const session(request.node);
    reportLook(session.getNode(), listKeyTimes(session.getNode()), reporter);
    // Refuses what it cannot express before anything is written.
    std::string const look =
        request.openFx.empty() ? std::string() : writeOpenFxLook(session.getNode());
    if (!request.output.empty()) {
        saveProject(request.output, session.getNode());
    }
    if (!request.openFx.empty()) {
        saveText(request.openFx, "OpenFX look", look);
    }
    if (isStandardStream(request.output) || isStandardStream(request.openFx)) {
        sendStandardFile(EarlyEnd::IsEnough);
    }
}
