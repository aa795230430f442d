#pragma once

#include "remapcolor/reports/Reporter.h"

struct PickRequest;

/// Sends one pixel of a picture through the tool by a single-pixel request and prints what went in
/// and what came out: what "render" makes of that pixel at 32 bit. Throws UsageError, ValueError,
/// ImageFileError, SurroundingsError, ToolLoadError, Interrupted after a signal, std::bad_alloc.
void runPick(PickRequest const& request, Reporter& reporter);
