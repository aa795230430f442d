#pragma once

#include "remapcolor/reports/Reporter.h"

#include <filesystem>
#include <vector>

class CommandOptions;

/// What "info" is asked to do.
struct InfoRequest {
    enum class Form { Lines, Json };

    std::vector<std::filesystem::path> files;
    Form form = Form::Lines;
};

/// Adds the options of "info", which fill `request`; it lives longer than `options`.
void addInfoOptions(CommandOptions& options, InfoRequest& request);

/// Throws UsageError unless `request` names a picture.
void checkComplete(InfoRequest const& request);

/// Prints what the files say of themselves to standard output; a file that cannot be read is told
/// to the reporter, the others follow. Returns the exit status. Throws SurroundingsError.
int runInfo(InfoRequest const& request, Reporter& reporter);
