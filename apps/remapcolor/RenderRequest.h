#pragma once

#include "remapcolor/NodeRequest.h"
#include "remapcolor/Reporter.h"

#include <filesystem>
#include <optional>
#include <string>

/// What "render" is asked to do.
struct RenderRequest {
    std::filesystem::path input;
    std::filesystem::path output;
    NodeRequest node;
    std::optional<std::filesystem::path> mask;
    std::string layer; ///< empty for the file's own channels
    int threads = 0;   ///< workers; 0 for as many as this process may use
    ProgressStyle progress = ProgressStyle::Auto;
    Verbosity verbosity = Verbosity::Normal;
};

/// Adds the options of "render", which fill `request`; it lives longer than `options`. Their
/// handlers throw UsageError.
void addRenderOptions(CommandOptions& options, RenderRequest& request);

/// Throws UsageError unless `request` names what to read and what to write.
void checkComplete(RenderRequest const& request);
