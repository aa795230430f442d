#pragma once

#include "remapcolor/commands/DescribeCommand.h"
#include "remapcolor/commands/ProjectCommand.h"
#include "remapcolor/options/LutRequest.h"
#include "remapcolor/options/PickRequest.h"
#include "remapcolor/options/RenderRequest.h"

#include <string>
#include <variant>

/// Text that was asked for, such as help.
struct PrintRequest {
    std::string text;
};

using Request = std::variant<PrintRequest, DescribeRequest, LutRequest, PickRequest, ProjectRequest,
                             RenderRequest>;

/// Reads a command line as main gets it. Throws UsageError; looks at no file.
Request parseCommandLine(int nbArguments, char const* const* arguments);
