#pragma once

#include "media/MediaOptions.h"

class CommandOptions;

/// How many layers and parts a command takes.
enum class LayerCount { One, Several };

/// Adds --layer and --part, which fill `read`; it lives longer than `options`. Their handlers throw
/// UsageError.
void addLayerOptions(CommandOptions& options, LayerCount count, ReadOptions& read);
