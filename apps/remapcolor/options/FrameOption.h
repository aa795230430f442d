#pragma once

#include "runtime/graph/HostNode.h"

#include <filesystem>
#include <optional>
#include <string>

class CommandOptions;

/// The frame that a picture stands for, which is the time of keyframed values. Empty where the
/// command line does not say.
using FrameChoice = std::optional<double>;

/// Adds the option that fills `frame`, which lives longer than `options`. `names` as CommandOptions
/// takes them. Its handler throws UsageError.
void addFrameOption(CommandOptions& options, std::string const& names, FrameChoice& frame);

/// The first value that is not the same at all times; empty where there is none.
std::string findKeyframedValue(HostNode const& node);

/// The time of the node's values: `frame`, or 0 where none is given and they are the same at all
/// times. Throws UsageError where they are not; it offers the number in the name of `input`, which
/// may be empty.
double chooseTime(HostNode const& node, FrameChoice const& frame,
                  std::filesystem::path const& input);
