#pragma once

#include "media/MediaOptions.h"
#include "remapcolor/options/FrameOption.h"
#include "remapcolor/options/MaskRequest.h"
#include "remapcolor/options/NodeRequest.h"
#include "remapcolor/reports/Reporter.h"
#include "shots/ShotPlan.h"
#include "shots/ShotRender.h"

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>

/// What "render" is asked to do.
struct RenderRequest {
    ShotRequest shot; ///< without output
    std::filesystem::path output;
    std::optional<FileKind> kind; ///< of standard output
    FrameChoice frame;            ///< of a single picture
    std::string framesFile;       ///< that lists the frames; "-" for standard input, "" for none
    NodeRequest node;
    MaskRequest mask;
    ReadOptions read;
    std::optional<CompressionChoice> compression; ///< none: the input's
    ExistingOutput existing = ExistingOutput::Overwrite;
    MissingInput missing = MissingInput::Fail;
    bool skipsAnyAge = false; ///< outputs may be older than what they are made of
    bool isStamped = false;   ///< pictures say how they were made
    bool isDryRun = false;
    int threads = 0;        ///< workers; 0 for as many as this process may use
    std::size_t memory = 0; ///< bytes; 0 for what this process may use
    std::optional<std::filesystem::path> log;
    ProgressStyle progress = ProgressStyle::Auto;
    Verbosity verbosity = Verbosity::Normal;
};

/// Adds the options of "render", which fill `request`; it lives longer than `options`. Their
/// handlers throw UsageError and ShotError.
void addRenderOptions(CommandOptions& options, RenderRequest& request);

/// Throws UsageError unless `request` names what to read and what to write.
void checkComplete(RenderRequest const& request);
