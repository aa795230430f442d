#pragma once

#include "remapcolor/NodeRequest.h"

#include <filesystem>
#include <optional>
#include <string>

/// Coordinates of a pixel, as the picture's data window counts them.
struct PixelPlace {
    int x;
    int y;
};

/// What "pick" is asked to do.
struct PickRequest {
    enum class Form { Lines, Json };

    std::filesystem::path input;
    std::optional<PixelPlace> place;
    NodeRequest node;
    std::string layer; ///< empty for the file's own channels
    double time = 0.0;
    Form form = Form::Lines;
};

/// Adds the options of "pick", which fill `request`; it lives longer than `options`. Their handlers
/// throw UsageError.
void addPickOptions(CommandOptions& options, PickRequest& request);

/// Throws UsageError unless `request` names a picture and a pixel.
void checkComplete(PickRequest const& request);
