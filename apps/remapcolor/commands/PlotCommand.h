#pragma once

#include "remapcolor/options/PlotRequest.h"

/// Draws what the tool does to values, and the histogram of a picture. Throws UsageError,
/// ValueError, ImageFileError, SurroundingsError, ToolLoadError, Interrupted, std::bad_alloc; the
/// file is then as it was.
void runPlot(PlotRequest const& request, Reporter& reporter);
