#pragma once

#include "remapcolor/options/PickRequest.h"
#include "runtime/engine/AreaPicker.h"

#include <string>
#include <variant>
#include <vector>

struct PickedPixel {
    CoRgbaColorTyped<float> in;
    CoRgbaColorTyped<float> out;
};

struct PickResult {
    PickPlace place; ///< of an area, the part that the picture has
    std::variant<PickedPixel, AreaSummary> values;
};

/// What "pick" prints.
struct Picks {
    std::string input;
    std::string mode;
    double time;
    std::vector<PickResult> results; ///< one at least
};

/// A block of lines for each place, with an empty line between two. The block of a single pixel
/// does not name it.
std::string formatLines(Picks const& picks);

/// An object, or an array of objects where there are several places.
std::string formatJson(Picks const& picks);

/// "12,40" or "12,40,16,16"
std::string formatPlace(PickPlace const& place);
