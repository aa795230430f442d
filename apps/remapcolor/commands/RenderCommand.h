#pragma once

#include "remapcolor/reports/Reporter.h"

struct RenderRequest;

/// Sends pictures through the tool and says what came of each. Everything about the request that
/// can be checked is checked before an input is read. Returns the exit status. Throws UsageError,
/// ValueError, ImageFileError, ShotError, SurroundingsError, ToolLoadError, std::bad_alloc before
/// anything is written.
int runRender(RenderRequest const& request, Reporter& reporter);
