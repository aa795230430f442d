#pragma once

#include "remapcolor/reports/Reporter.h"
#include "shots/ShotCheck.h"

#include <string>

class CommandOptions;

/// What "check" is asked to do.
struct CheckRequest {
    enum class Form { Lines, Json };

    ShotCheckRequest shot;
    std::string framesFile; ///< "" for none, "-" for standard input
    Form form = Form::Lines;
};

/// Adds the options of "check", which fill `request`; it lives longer than `options`.
void addCheckOptions(CommandOptions& options, CheckRequest& request);

/// Throws UsageError unless `request` names an input.
void checkComplete(CheckRequest const& request);

/// Reads the pictures and prints what is wrong with them to standard output. Returns the exit
/// status: PictureFailed if something is. Throws UsageError, ShotError, SurroundingsError,
/// Interrupted.
int runCheck(CheckRequest const& request, Reporter& reporter);
