#pragma once

#include "shots/FrameList.h"

#include <optional>
#include <string>
#include <vector>

class CommandOptions;

/// Adds -f,--frames, which fills `frames`, and --frames-from, which fills `framesFile`; the one
/// that comes last counts. Both live longer than `options`. Handlers throw ShotError.
void addFrameListOptions(CommandOptions& options, std::optional<std::vector<Frame>>& frames,
                         std::string& framesFile);

/// The frames of a list in a file, or on standard input for "-". Throws UsageError, ShotError.
std::vector<Frame> loadFrames(std::string const& file);
