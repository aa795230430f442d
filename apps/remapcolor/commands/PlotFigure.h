#pragma once

#include "controllerLink/ControllerLink.h"
#include "plots/Figure.h"
#include "session/AxisHistogram.h"
#include "session/NodePart.h"

#include <optional>
#include <string>
#include <vector>

/// What of a node is plotted.
struct PlotRanges {
    FigureAxis input;
    std::optional<GeInterval<float>> results; ///< none: all that there are
};

/// What a node does to values at a time, as a figure with the panels of PlotPanel: the mode's
/// transfer, the adjustment curves, and both together. Every value that is drawn has been through
/// the tool. User-interface thread.
class PlotFigure {
public:
    /// Node and link live longer.
    PlotFigure(HostNode& plottedNode, ControllerLink const& link, double plottedTime,
               PlotRanges plottedRanges);

    /// Counts pixels of a picture for the histograms behind the lines.
    void addPixels(std::vector<CoRgbaColorTyped<float>> const& pixels);

    /// Puts the histograms, of a picture of that name, into the figure.
    void addHistograms(std::string const& name);

    Figure const& getFigure() const { return figure; }

    /// Of the picture's values, and of what the transfer makes of them.
    AxisHistogram const& getInputHistogram() const { return inputHistogram; }
    AxisHistogram const& getTransferHistogram() const { return transferHistogram; }

    /// Keys that lie beyond the panel of the curves, "x,y" each.
    std::vector<std::string> const& getHiddenKeys() const { return hiddenKeys; }

private:
    FigurePanel makeTransferPanel() const;
    FigurePanel makeCurvePanel(FigureAxis const& transferAxis);
    FigurePanel makeChainPanel() const;
    FigureAxis makeResultAxis(FigurePanel const& panel, std::string const& label) const;
    void addMarks(CoRgbColorTyped<float> const& colour);

    HostNode& node;
    double time;
    PlotRanges ranges;
    NodePart transfer;
    NodePart curves;
    Figure figure;
    AxisHistogram inputHistogram;
    AxisHistogram transferHistogram;
    std::vector<std::string> hiddenKeys;
};
