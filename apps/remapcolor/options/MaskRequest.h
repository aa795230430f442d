#pragma once

#include "media/MediaOptions.h"
#include "runtime/graph/MaskUse.h"

#include <filesystem>
#include <optional>
#include <string>

class CommandOptions;

/// The mask that a command is asked to use.
struct MaskRequest {
    std::optional<std::filesystem::path> file; ///< none: no mask
    std::string layer;                         ///< empty for the file's own channels
    std::string part;                          ///< empty for the first that suits
    std::string channel;                       ///< empty for alpha, or else the only or first one
    MaskUse use = MaskUse::AsIs;
};

/// Adds the options that fill `request`; it lives longer than `options`.
void addMaskOptions(CommandOptions& options, MaskRequest& request);

/// How the mask is to be read.
ReadOptions makeReadOptions(MaskRequest const& request);

/// Throws UsageError where options of a mask are given without one.
void checkComplete(MaskRequest const& request);
