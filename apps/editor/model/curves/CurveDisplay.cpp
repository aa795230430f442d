#include "editor/model/curves/CurveDisplay.h"

#include <algorithm>
#include <cmath>

namespace {

using Histogram = CurveDisplay::Histogram;
using Kind = ControllerNotice::Kind;

constexpr int nbLineChoices = 3;
constexpr int nbHistograms = 4;
constexpr int further = 4; ///< what the second choice in a number adds
constexpr double leastZoom = 1.0 / 64.0;
constexpr double greatestZoom = 4096.0;

bool isWithin(int number, int nbChoices)
{
    return number >= 0 && number < 2 * further && number % further < nbChoices;
}

int encodeLines(CurveDisplay const& display)
{
    int const lines = display.hasBoth ? 2 : display.hasTransfer ? 1 : 0;
    return lines + (display.axis == CurveAxis::Stops ? further : 0);
}

int encodeHistogram(CurveDisplay const& display)
{
    return static_cast<int>(display.histogram) + (display.isLogarithmic ? further : 0);
}

} // namespace

CurveDisplay readCurveDisplay(ControllerLink const& link)
{
    ControllerLink::Display const stored = link.getDisplay();
    CurveDisplay display;
    if (isWithin(stored.curves, nbLineChoices)) {
        display.hasTransfer = stored.curves % further >= 1;
        display.hasBoth = stored.curves % further == 2;
        display.axis = stored.curves >= further ? CurveAxis::Stops : CurveAxis::Linear;
    }
    if (stored.channels >= 0 && stored.channels < CurveDisplay::allChannels) {
        display.channel = stored.channels;
    }
    if (isWithin(stored.histogram, nbHistograms)) {
        display.histogram = static_cast<Histogram>(stored.histogram % further);
        display.isLogarithmic = stored.histogram >= further;
    }
    if (stored.histogramZoom >= leastZoom && stored.histogramZoom <= greatestZoom) {
        display.histogramZoom = stored.histogramZoom;
    }
    return display;
}

void writeCurveDisplay(Document& document, CurveDisplay const& display)
{
    ControllerLink const& link = document.getLink();
    CurveDisplay const shown = readCurveDisplay(link);
    NodeValues states;
    auto const put = [&](Kind kind, auto number) {
        states.emplace(link.getValueName(kind), Animated<decltype(number)>(number));
    };
    if (encodeLines(display) != encodeLines(shown)) {
        put(Kind::CurveDisplay, encodeLines(display));
    }
    if (display.channel != shown.channel) {
        put(Kind::ChannelDisplay, display.channel);
    }
    if (encodeHistogram(display) != encodeHistogram(shown)) {
        put(Kind::HistoDisplay, encodeHistogram(display));
    }
    if (display.histogramZoom != shown.histogramZoom) {
        put(Kind::HistoZoom, std::clamp(display.histogramZoom, leastZoom, greatestZoom));
    }
    PiUndoGuardNoLog const unrecorded(true);
    document.getNode().setValues(states);
}

std::optional<GraphRange> readCurveView(ControllerLink const& link)
{
    GeVector2<float> const pan = link.getViewPan();
    GeVector2<float> const zoom = link.getViewZoom();
    bool const isUsable = zoom.x > 0.0F && zoom.y > 0.0F && std::isfinite(zoom.x) &&
                          std::isfinite(zoom.y) && std::isfinite(pan.x) && std::isfinite(pan.y);
    if (!isUsable) {
        return {};
    }
    double const width = 1.0 / double{zoom.x};
    double const height = 1.0 / double{zoom.y};
    return GraphRange{double{pan.x} - 0.5 * width, double{pan.y} - 0.5 * height, width, height};
}

void writeCurveView(ControllerLink& link, GraphRange const& range)
{
    link.setViewPan({static_cast<float>(range.left + 0.5 * range.width),
                     static_cast<float>(range.bottom + 0.5 * range.height)});
    link.setViewZoom(
        {static_cast<float>(1.0 / range.width), static_cast<float>(1.0 / range.height)});
}
