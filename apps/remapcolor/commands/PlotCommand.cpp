// "plot": the node's transfer, curves and chain as a figure.

#include "remapcolor/commands/PlotCommand.h"

#include "files/StandardFiles.h"
#include "media/ImageFiles.h"
#include "pluginAPI/IxSampleConversion.h"
#include "remapcolor/commands/PlotFigure.h"
#include "remapcolor/reports/StandardStreams.h"
#include "remapcolor/session/LookNotes.h"
#include "remapcolor/session/RequestedSession.h"
#include "remapcolor/session/StandardInput.h"
#include "remapcolor/session/StopSignals.h"
#include "runtime/values/NumberText.h"
#include "session/Failures.h"
#include "session/ProjectFiles.h"

#include <cstddef>
#include <span>
#include <utility>

namespace {

using Pixel = CoRgbaColorTyped<float>;

FigureAxis makeInputAxis(PlotRequest const& request)
{
    using Unit = FigureAxis::Unit;
    return {double{request.range.minimum}, double{request.range.maximum},
            request.hasStops ? "input in stops, 0 is the value 1" : "input",
            request.hasStops ? Unit::Stop : Unit::Value};
}

std::vector<Pixel> readPixels(IxTile const& tile)
{
    IxReadGuard const guard(tile);
    GeRectangle<int> const& bounds = tile.getBounds();
    auto const width = static_cast<std::size_t>(bounds.getWidth());
    std::vector<Pixel> pixels(width * static_cast<std::size_t>(bounds.getHeight()));
    for (int y = bounds.y0; y < bounds.y1; ++y) {
        readPixelRow(
            tile.getPixelFormat(), guard.getRow(y),
            std::span(pixels).subspan(width * static_cast<std::size_t>(y - bounds.y0), width));
    }
    return pixels;
}

void checkInput(PlotRequest const& request)
{
    std::error_code ignored;
    bool const areFiles = !isStandardStream(request.input) && !isStandardStream(request.output);
    if (areFiles && std::filesystem::equivalent(request.input, request.output, ignored)) {
        throw UsageError("the plot would replace its input " + nameInput(request.input) +
                         "; give another name after -o");
    }
}

void countPixels(PlotRequest const& request, PlotFigure& figure)
{
    auto const source = openImage(request.input, request.read);
    if (source->getInfo().format.getComponents() == IxPixelFormat::ALPHA) {
        throw UsageError("there is no colour in " + nameInput(request.input) +
                         ", of which a histogram could be drawn");
    }
    int const height = source->getInfo().dataWindow.getHeight();
    ImageStrip strip;
    int index = 0;
    for (int rows = 0; rows < height; rows += strip.colour.getBounds().getHeight()) {
        StopSignals::throwIfAsked();
        source->readStrip(source->getStripBounds(index++, source->getRowsPerBlock()), strip);
        figure.addPixels(readPixels(strip.colour));
    }
}

/// The panels that are asked for.
Figure selectPanels(Figure figure, std::set<PlotPanel> const& wanted)
{
    std::vector<FigurePanel> panels;
    for (PlotPanel const panel : wanted) {
        panels.push_back(std::move(figure.panels[static_cast<std::size_t>(panel)]));
    }
    figure.panels = std::move(panels);
    return figure;
}

void reportOutside(AxisHistogram const& histogram, Reporter& reporter)
{
    if (histogram.getNbOutside() > 0) {
        double const share = histogram.getNbOutside() / histogram.getNbValues();
        reporter.note("the histogram lacks " + formatShort(100.0 * share) +
                      " % of the picture's values, which lie beyond the plotted range or are NaN");
    }
}

void reportHiddenKeys(std::vector<std::string> const& keys, Reporter& reporter)
{
    if (!keys.empty()) {
        std::size_t const nbMore = keys.size() - 1;
        reporter.note("the plot of the curves does not reach their key " + keys.front() +
                      (nbMore == 0 ? "" : " and " + std::to_string(nbMore) + " more"));
    }
}

std::string draw(Figure const& figure, FigureFormat format)
{
    try {
        return drawFigure(figure, format);
    } catch (FigureError const& error) {
        throw SurroundingsError(std::string("cannot draw the plot: ") + error.what());
    }
}

} // namespace

void runPlot(PlotRequest const& request, Reporter& reporter)
{
    StopSignals const signals;
    refuseTerminal({request.input});
    if (request.format == FigureFormat::Png) {
        checkStandardOutput(request.output);
    }
    RequestedSession session(request.node);
    HostNode& node = session.getNode();
    double const time = chooseTime(node, request.frame, request.input);
    checkOutput(request.output, "plot");
    checkInput(request);
    auto const link = session.linkController();
    reportLook(node, {time}, reporter);
    PlotFigure figure(node, *link, time, {makeInputAxis(request), request.results});
    bool const showsCurves = request.panels.contains(PlotPanel::Curves);
    if (showsCurves) {
        reportHiddenKeys(figure.getHiddenKeys(), reporter);
    }
    if (!request.input.empty()) {
        countPixels(request, figure);
        bool const showsCurvesOnly = showsCurves && request.panels.size() == 1;
        reportOutside(showsCurvesOnly ? figure.getTransferHistogram() : figure.getInputHistogram(),
                      reporter);
        figure.addHistograms(isStandardStream(request.input) ? "standard input"
                                                             : request.input.filename().string());
    }
    saveText(request.output, "plot",
             draw(selectPanels(figure.getFigure(), request.panels), request.format.value()));
    if (isStandardStream(request.output)) {
        sendStandardFile(EarlyEnd::IsFailure);
    }
}
