#pragma once

#include "media/MediaOptions.h"
#include "plots/FigureFile.h"
#include "primitives/GeInterval.h"
#include "remapcolor/options/FrameOption.h"
#include "remapcolor/options/NodeRequest.h"
#include "remapcolor/reports/Reporter.h"

#include <filesystem>
#include <optional>
#include <set>
#include <string>

/// What a figure may show, from left to right.
enum class PlotPanel { Transfer, Curves, Both };

/// What "plot" is asked to do.
struct PlotRequest {
    std::filesystem::path input; ///< whose histogram is shown; empty for none
    std::filesystem::path output;
    std::optional<FigureFormat> format;  ///< of `output`, once that is checked
    GeInterval<float> range{0.0F, 1.0F}; ///< of the input: values, or stops from 1
    bool hasStops = false;
    std::optional<GeInterval<float>> results; ///< to plot; none: all
    std::set<PlotPanel> panels{PlotPanel::Transfer, PlotPanel::Curves, PlotPanel::Both};
    NodeRequest node;
    FrameChoice frame;
    ReadOptions read; ///< of the input
    Verbosity verbosity = Verbosity::Normal;
};

/// Adds the options of "plot", which fill `request`; it lives longer than `options`. Their handlers
/// throw UsageError.
void addPlotOptions(CommandOptions& options, PlotRequest& request);

/// Throws UsageError unless `request` names a figure to write; its format is set.
void checkComplete(PlotRequest& request);
