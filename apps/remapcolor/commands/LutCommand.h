#pragma once

#include "remapcolor/options/LutRequest.h"

/// Writes what the chain makes of every half, or of places over a domain, as a table, and says what
/// the table lacks. Throws UsageError, ValueError, SurroundingsError, ToolLoadError; the file is
/// then as it was.
void runLut(LutRequest const& request, Reporter& reporter);
