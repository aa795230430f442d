#pragma once

#include "remapcolor/Reporter.h"

struct RenderRequest;

/// Sends one picture through the tool. Everything about the request that can be checked is checked
/// before the input is read; when it throws, no output is left behind. Throws UsageError,
/// ValueError, ImageFileError, SurroundingsError, ToolLoadError, Interrupted after a signal,
/// std::bad_alloc.
void runRender(RenderRequest const& request, Reporter& reporter);
