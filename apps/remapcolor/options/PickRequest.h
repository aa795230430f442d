#pragma once

#include "media/MediaOptions.h"
#include "remapcolor/options/FrameOption.h"
#include "remapcolor/options/MaskRequest.h"
#include "remapcolor/options/NodeRequest.h"

#include <filesystem>
#include <string>
#include <vector>

/// A pixel or an area, in the coordinates of the picture's data window.
struct PickPlace {
    int x;
    int y;
    int width = 1;
    int height = 1;
    bool isArea = false; ///< an area of one pixel is one too
};

/// What "pick" is asked to do.
struct PickRequest {
    enum class Form { Lines, Json };

    std::filesystem::path input;
    std::vector<PickPlace> places;
    NodeRequest node;
    ReadOptions read;
    MaskRequest mask;
    FrameChoice frame;
    Form form = Form::Lines;
};

/// Adds the options of "pick", which fill `request`; it lives longer than `options`. Their handlers
/// throw UsageError.
void addPickOptions(CommandOptions& options, PickRequest& request);

/// Throws UsageError unless `request` names a picture and a place.
void checkComplete(PickRequest const& request);
