#pragma once

#include "remapcolor/DescribeCommand.h"
#include "remapcolor/PickRequest.h"
#include "remapcolor/ProjectCommand.h"
#include "remapcolor/RenderRequest.h"

#include <string>
#include <variant>

/// Text that was asked for, such as help.
struct PrintRequest {
    std::string text;
};

using Request =
    std::variant<PrintRequest, DescribeRequest, PickRequest, ProjectRequest, RenderRequest>;

/// Reads a command line as main gets it. Throws UsageError; looks at no file.
Request parseCommandLine(int nbArguments, char const* const* arguments);
