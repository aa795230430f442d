#pragma once

#include "editor/model/curves/CurveScale.h"
#include "editor/model/document/Document.h"

#include <optional>

/// What the curve editor shows. It lives where the tool keeps it: most of it in stored values of
/// the node, so that projects have it, pan and zoom in the controller.
struct CurveDisplay {
    enum class Histogram { None, Source, Transferred, Result };

    /// 0 red, 1 green, 2 blue; allChannels for the three.
    static constexpr int allChannels = 3;

    int channel = allChannels;
    bool hasTransfer = true; ///< the mode's transfer behind the curves
    bool hasBoth = false;    ///< what becomes of values in all
    CurveAxis axis = CurveAxis::Linear;
    Histogram histogram = Histogram::Transferred;
    bool isLogarithmic = false; ///< the histogram's counts
    double histogramZoom = 1.0; ///< of its height

    bool operator==(CurveDisplay const&) const = default;
};

/// How the stored numbers are read. "Curve Display": 0 curves, 1 with the transfer, 2 with all
/// together, and 4 more for stops. "Channel Display": 0 to 2 a channel, 3 all. "Histo Display": 0
/// none, 1 of the source, 2 after the transfer, 3 of the result, and 4 more for logarithmic counts.
/// Any other number counts as the tool's default.
CurveDisplay readCurveDisplay(ControllerLink const& link);

/// Stores what differs; no step of the history.
void writeCurveDisplay(Document& document, CurveDisplay const& display);

/// Empty until there is one.
std::optional<GraphRange> readCurveView(ControllerLink const& link);
void writeCurveView(ControllerLink& link, GraphRange const& range);
