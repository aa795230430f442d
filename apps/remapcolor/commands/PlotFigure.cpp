// A node's transfer, curves and chain as a figure.

#include "remapcolor/commands/PlotFigure.h"

#include "plots/PlotScale.h"
#include "pluginAPI/PiImageModifier.h"
#include "remapcolor/options/FrameOption.h"
#include "remapcolor/session/LookNotes.h"
#include "runtime/engine/SentPixels.h"
#include "runtime/graph/EvaluatedValue.h"
#include "runtime/graph/ValueNames.h"
#include "runtime/values/NumberText.h"
#include "session/ToolKeys.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <utility>

namespace {

using Pixel = CoRgbaColorTyped<float>;
using Points = std::vector<FigurePoint>;

constexpr std::array tones = {FigureTone::Red, FigureTone::Green, FigureTone::Blue};
constexpr std::array figureChannels = {&Pixel::red, &Pixel::green, &Pixel::blue};
constexpr std::array letters = {"R", "G", "B"};
constexpr std::size_t nbChannels = figureChannels.size();
constexpr int nbSteps = 620;           // of a line: as many as a panel has pixels
constexpr std::size_t nbClasses = 155; // of a histogram: four of these each

/// Coordinates along an axis and the grey pixels that they stand for.
struct Samples {
    explicit Samples(FigureAxis const& axis)
    {
        for (int step = 0; step <= nbSteps; ++step) {
            double const place = axis.low + (axis.high - axis.low) * step / nbSteps;
            bool const isStop = axis.unit == FigureAxis::Unit::Stop;
            auto const value = static_cast<float>(isStop ? std::exp2(place) : place);
            places.push_back(place);
            pixels.push_back({value, value, value, 1.0F});
        }
    }

    /// What leaves values as they are.
    Points makeReference() const
    {
        Points points;
        for (std::size_t index = 0; index < places.size(); ++index) {
            points.push_back({places[index], double{pixels[index].red}});
        }
        return points;
    }

    /// A line for each channel; one for all three where they are the same. Of two that are the
    /// same, one has the label of both.
    std::vector<FigureLine> makeLines(std::vector<Pixel> const& results) const
    {
        std::vector<FigureLine> lines;
        for (std::size_t channel = 0; channel < nbChannels; ++channel) {
            Points points;
            for (std::size_t index = 0; index < places.size(); ++index) {
                points.push_back({places[index], double{results[index].*figureChannels[channel]}});
            }
            lines.push_back({tones[channel], letters[channel], points});
            for (std::size_t other = 0; other < channel; ++other) {
                if (!lines[channel].isOnAnother && areSame(lines[other].points, points)) {
                    lines[other].label += std::string(" ") + letters[channel];
                    lines[channel].label.clear();
                    lines[channel].isOnAnother = true;
                }
            }
        }
        if (lines[1].isOnAnother && lines[2].isOnAnother) {
            return {{FigureTone::Neutral, "", lines.front().points}};
        }
        return lines;
    }

    std::vector<double> places;
    std::vector<Pixel> pixels;

private:
    static bool areSame(Points const& one, Points const& other)
    {
        return std::equal(one.begin(), one.end(), other.begin(), [](auto const& a, auto const& b) {
            return a.y == b.y || (std::isnan(a.y) && std::isnan(b.y));
        });
    }
};

/// The least range that holds values, and 0.
struct Extent {
    double low = 0.0;
    double high = 0.0;

    void add(double value)
    {
        if (std::isfinite(value)) {
            low = std::min(low, value);
            high = std::max(high, value);
        }
    }

    /// Display white, 1, ends an axis on which it is not far off.
    FigureAxis makeAxis(std::string const& label) const
    {
        constexpr double nearWhite = 0.5;
        constexpr double hardlyBeyond = 1e-5; // what a table's rounding may add
        bool const endsAtWhite = high > nearWhite && high < 1.0 + hardlyBeyond;
        bool const startsAtBlack = low > -hardlyBeyond;
        return makeRoundAxis(startsAtBlack ? 0.0 : low, endsAtWhite ? 1.0 : high, label);
    }
};

/// The control points of the three curves.
std::vector<CurvePoints> listCurves(HostNode const& node, double time)
{
    std::vector<CurvePoints> curves;
    for (HostNode::ValueSlot const& slot : findValues(node, ToolKeys::adjustCurve)) {
        curves.push_back(evaluateValue<CurvePoints>(node, slot.name, time));
    }
    return curves;
}

FigurePoint toPoint(GePoint2<float> const& point)
{
    return {double{point.x}, double{point.y}};
}

/// Keys with the handles that do not lie on them.
std::vector<FigureKey> listKeys(std::vector<CurvePoints> const& curves)
{
    constexpr std::size_t pointsPerKey = 3;
    bool const areAlike = curves[0] == curves[1] && curves[0] == curves[2];
    std::vector<FigureKey> keys;
    for (std::size_t channel = 0; channel < (areAlike ? 1 : nbChannels); ++channel) {
        CurvePoints const& points = curves[channel];
        for (std::size_t key = 0; key + 2 < points.size(); key += pointsPerKey) {
            FigureKey made{
                areAlike ? FigureTone::Neutral : tones[channel], toPoint(points[key + 1]), {}};
            for (std::size_t const handle : {key, key + 2}) {
                if (points[handle] != points[key + 1]) {
                    made.handles.push_back(toPoint(points[handle]));
                }
            }
            keys.push_back(made);
        }
    }
    return keys;
}

bool isWithin(FigureAxis const& axis, double place)
{
    return place >= axis.low && place <= axis.high;
}

/// From `axis` to keys that are not far from it.
FigureAxis widen(FigureAxis const& axis, std::vector<FigureKey> const& keys)
{
    double const reach = 1.5 * (axis.high - axis.low);
    double low = axis.low;
    double high = axis.high;
    for (FigureKey const& key : keys) {
        double const x = key.key.x;
        if (x >= axis.low - reach && x <= axis.high + reach) {
            low = std::min(low, x);
            high = std::max(high, x);
        }
    }
    return makeRoundAxis(low, high, axis.label);
}

/// Curves, and what an editor stores, such as the plot colour, show themselves.
bool isShown(HostNode const& node, std::string const& name)
{
    ValueSlots const slots = findValues(node, name);
    return !name.starts_with(ToolKeys::adjustCurve) && !slots.empty() && !slots.front().isStored;
}

/// The values that are not at their defaults.
std::string describeValues(HostNode const& node, double time)
{
    std::string text;
    auto const look = describeLook(node); // mode first, which the title has
    for (std::size_t index = 1; index < look.size(); ++index) {
        auto const& [name, value] = look[index];
        if (isShown(node, name)) {
            text += (text.empty() ? "" : ",  ") + name + " " + value;
        }
    }
    if (!findKeyframedValue(node).empty()) {
        text += (text.empty() ? "at time " : ",  at time ") + formatNumber(time);
    }
    return text.empty() ? "transfer at its defaults" : text;
}

/// What stands between the tool and the result.
std::string describeFinish(HostNode const& node, double time)
{
    std::string const muteName = PiImageModifier::getMuteValueName();
    if (evaluateValue<bool>(node, muteName, time)) {
        return muteName + " is on";
    }
    double const mix = evaluateValue<double>(node, ToolKeys::mix, time);
    return mix == 1.0 ? "" : std::string(ToolKeys::mix) + " " + formatNumber(mix);
}

void addHistogram(FigurePanel& panel, AxisHistogram const& histogram)
{
    for (std::size_t channel = 0; channel < nbChannels; ++channel) {
        panel.histograms.push_back({tones[channel], histogram.getCounts()[channel]});
    }
}

} // namespace

PlotFigure::PlotFigure(HostNode& plottedNode, ControllerLink const& link, double plottedTime,
                       PlotRanges plottedRanges)
    : node(plottedNode), time(plottedTime), ranges(std::move(plottedRanges)),
      transfer(NodePart::takeTransfer(node, link.getClampInputName())),
      curves(NodePart::takeCurves(node)), inputHistogram(ranges.input, nbClasses),
      transferHistogram(ranges.input, nbClasses)
{
    figure.title = std::string(ToolKeys::tool) + ": " + describeLook(node).front().second;
    figure.subtitle = describeValues(node, time);
    figure.referenceText = "unchanged";
    figure.panels.push_back(makeTransferPanel());
    figure.panels.push_back(makeCurvePanel(figure.panels[0].y));
    figure.panels.push_back(makeChainPanel());
    transferHistogram = AxisHistogram(figure.panels[1].x, nbClasses);
    if (link.isPlotColorEnabled()) {
        addMarks(link.getPlotColor());
    }
}

FigurePanel PlotFigure::makeTransferPanel() const
{
    FigurePanel panel;
    panel.title = "Transfer";
    panel.x = ranges.input;
    Samples const samples(ranges.input);
    panel.lines = samples.makeLines(transfer.send(samples.pixels, time));
    panel.reference = samples.makeReference();
    panel.y = makeResultAxis(panel, "after the transfer");
    return panel;
}

FigurePanel PlotFigure::makeCurvePanel(FigureAxis const& transferAxis)
{
    FigurePanel panel;
    panel.title = "Adjustment curves";
    panel.remark = evaluateValue<bool>(node, ToolKeys::adjust, time) ? "" : "off: Adjust is false";
    panel.keys = listKeys(listCurves(node, time));
    panel.x = ranges.results.has_value() ? transferAxis : widen(transferAxis, panel.keys);
    Samples const samples(panel.x);
    panel.lines = samples.makeLines(curves.send(samples.pixels, time));
    panel.reference = samples.makeReference();
    panel.y = makeResultAxis(panel, "after the curve");
    for (FigureKey const& key : panel.keys) {
        if (!isWithin(panel.x, key.key.x) || !isWithin(panel.y, key.key.y)) {
            hiddenKeys.push_back(formatShort(key.key.x) + "," + formatShort(key.key.y));
        }
    }
    return panel;
}

FigurePanel PlotFigure::makeChainPanel() const
{
    FigurePanel panel;
    panel.title = "Both together";
    panel.remark = describeFinish(node, time);
    panel.x = ranges.input;
    Samples const samples(ranges.input);
    panel.lines = samples.makeLines(sendPixels(node, samples.pixels, time));
    panel.reference = samples.makeReference();
    panel.y = makeResultAxis(panel, "output");
    return panel;
}

FigureAxis PlotFigure::makeResultAxis(FigurePanel const& panel, std::string const& label) const
{
    if (ranges.results.has_value()) {
        return {double{ranges.results->minimum}, double{ranges.results->maximum}, label};
    }
    Extent extent;
    for (FigureLine const& line : panel.lines) {
        for (FigurePoint const& point : line.points) {
            extent.add(point.y);
        }
    }
    for (FigureKey const& key : panel.keys) {
        if (isWithin(panel.x, key.key.x)) {
            extent.add(key.key.y);
        }
    }
    return extent.makeAxis(label);
}

void PlotFigure::addMarks(CoRgbColorTyped<float> const& colour)
{
    figure.markText = "plot colour";
    std::vector<Pixel> const in = {{colour.red, colour.green, colour.blue, 1.0F}};
    Pixel const between = transfer.send(in, time).front();
    std::array const ends = {between, curves.send({between}, time).front(),
                             sendPixels(node, in, time).front()};
    std::array const starts = {in.front(), between, in.front()};
    for (std::size_t panel = 0; panel < figure.panels.size(); ++panel) {
        bool const hasStops = figure.panels[panel].x.unit == FigureAxis::Unit::Stop;
        for (std::size_t channel = 0; channel < nbChannels; ++channel) {
            double const value = starts[panel].*figureChannels[channel];
            FigurePoint const place{hasStops ? std::log2(value) : value,
                                    double{ends[panel].*figureChannels[channel]}};
            if (isWithin(figure.panels[panel].x, place.x)) {
                figure.panels[panel].marks.push_back({tones[channel], place});
            }
        }
    }
}

void PlotFigure::addPixels(std::vector<Pixel> const& pixels)
{
    inputHistogram.add(pixels);
    transferHistogram.add(transfer.send(pixels, time));
}

void PlotFigure::addHistograms(std::string const& name)
{
    figure.histogramText = "histogram of " + name + ", square-root heights";
    addHistogram(figure.panels[0], inputHistogram);
    addHistogram(figure.panels[1], transferHistogram);
    addHistogram(figure.panels[2], inputHistogram);
}
