#pragma once

#include "primitives/GeInterval.h"
#include "remapcolor/options/FrameOption.h"
#include "remapcolor/options/MaskRequest.h"
#include "remapcolor/options/NodeRequest.h"
#include "remapcolor/reports/Reporter.h"

#include <filesystem>
#include <optional>

/// The files that hold a table.
enum class LutFormat {
    Clf, ///< a place for every half
    Cube,
    Spi1d
};

/// What "lut" is asked to do.
struct LutRequest {
    std::filesystem::path output;
    std::optional<LutFormat> format;         ///< of `output`, once that is checked
    std::optional<GeInterval<float>> domain; ///< of the places; none: 0 to 1
    std::optional<int> size;                 ///< number of places; none: 4096
    NodeRequest node;
    MaskRequest mask; ///< which no table can hold
    FrameChoice frame;
    Verbosity verbosity = Verbosity::Normal;
};

/// Adds the options of "lut", which fill `request`; it lives longer than `options`. Their handlers
/// throw UsageError.
void addLutOptions(CommandOptions& options, LutRequest& request);

/// Throws UsageError unless `request` names a table to write and suits its format, which is set.
void checkComplete(LutRequest& request);
