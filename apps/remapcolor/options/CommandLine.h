#pragma once

#include "remapcolor/commands/CheckCommand.h"
#include "remapcolor/commands/CompletionCommand.h"
#include "remapcolor/commands/DescribeCommand.h"
#include "remapcolor/commands/InfoCommand.h"
#include "remapcolor/commands/ProjectCommand.h"
#include "remapcolor/options/LutRequest.h"
#include "remapcolor/options/PickRequest.h"
#include "remapcolor/options/PlotRequest.h"
#include "remapcolor/options/ProgramManual.h"
#include "remapcolor/options/RenderRequest.h"

#include <string>
#include <variant>

/// Text that was asked for, such as help.
struct PrintRequest {
    std::string text;
};

using Request =
    std::variant<PrintRequest, CheckRequest, CompletionRequest, DescribeRequest, InfoRequest,
                 LutRequest, PickRequest, PlotRequest, ProjectRequest, RenderRequest>;

/// Reads a command line as main gets it. Throws UsageError; looks at no file. Two commands are for
/// programs and in no help text: "complete WORD..." for shells, and "manual" for the manual page.
Request parseCommandLine(int nbArguments, char const* const* arguments);

/// What parseCommandLine takes, as texts.
ProgramManual getProgramManual();
