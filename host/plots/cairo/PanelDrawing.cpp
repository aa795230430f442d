// One panel: what lies behind, lines, keys, and the numbers around them.

#include "plots/cairo/PanelDrawing.h"

#include "plots/PlotScale.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <optional>

using namespace PanelStyle;

namespace {

constexpr Ink gridInk{0.0, 0.0, 0.0, 0.09};
constexpr Ink frameInk{0.35, 0.35, 0.35};
constexpr Font panelTitleFont{13.0, true};
constexpr Font remarkFont{11.0};
constexpr Font tickFont{11.0};
constexpr Font labelFont{11.5};
constexpr Font endFont{12.0, true};
constexpr double greenDash = 7.0;
constexpr double greenGap = 5.0;
constexpr double lineHeight = 14.0; // of labels at the ends of lines

/// From a panel's coordinates to the canvas.
class Placement {
public:
    Placement(FigurePanel const& placedPanel, Box const& placedBox)
        : panel(placedPanel), box(placedBox)
    {
    }

    double placeX(double x) const
    {
        return box.x + box.width * (x - panel.x.low) / (panel.x.high - panel.x.low);
    }
    double placeY(double y) const
    {
        return box.getBottom() - box.height * (y - panel.y.low) / (panel.y.high - panel.y.low);
    }
    FigurePoint place(FigurePoint const& point) const { return {placeX(point.x), placeY(point.y)}; }
    std::vector<FigurePoint> place(std::vector<FigurePoint> const& points) const
    {
        std::vector<FigurePoint> places;
        for (FigurePoint const& point : points) {
            places.push_back(place(point));
        }
        return places;
    }

private:
    FigurePanel const& panel;
    Box const& box;
};

/// All histograms of a panel share a scale.
void drawHistograms(Canvas& canvas, FigurePanel const& panel, Box const& box)
{
    constexpr double share = 0.92; // of the panel's height
    double most = 0.0;
    for (FigureHistogram const& histogram : panel.histograms) {
        for (double const count : histogram.counts) {
            most = std::max(most, count);
        }
    }
    if (most == 0.0) {
        return;
    }
    for (FigureHistogram const& histogram : panel.histograms) {
        double const width = box.width / static_cast<double>(histogram.counts.size());
        std::vector<FigurePoint> shape = {{box.x, box.getBottom()}};
        double left = box.x;
        for (double const count : histogram.counts) {
            // Square roots: what fills half of a picture must not hide the rest.
            double const top = box.getBottom() - share * box.height * std::sqrt(count / most);
            shape.push_back({left, top});
            left += width;
            shape.push_back({left, top});
        }
        shape.push_back({box.getRight(), box.getBottom()});
        canvas.fillShape(shape, chooseHistogramInk(histogram.tone));
    }
}

void drawTicks(Canvas& canvas, FigurePanel const& panel, Box const& box)
{
    constexpr double tickLength = 4.0;
    constexpr double hairWidth = 0.8;
    Placement const placement(panel, box);
    for (PlotTick const& tick : makeTicks(panel.x)) {
        double const x = placement.placeX(tick.place);
        canvas.line({{x, box.y}, {x, box.getBottom()}}, gridInk, hairWidth);
        canvas.line({{x, box.getBottom()}, {x, box.getBottom() + tickLength}}, frameInk, hairWidth);
        canvas.text({x, box.getBottom() + 17.0}, tick.label, tickFont, textInk, Align::Middle);
    }
    double widest = 0.0;
    for (PlotTick const& tick : makeTicks(panel.y)) {
        double const y = placement.placeY(tick.place);
        canvas.line({{box.x, y}, {box.getRight(), y}}, gridInk, hairWidth);
        canvas.line({{box.x - tickLength, y}, {box.x, y}}, frameInk, hairWidth);
        canvas.text({box.x - 8.0, y + 4.0}, tick.label, tickFont, textInk, Align::Right);
        widest = std::max(widest, canvas.measure(tick.label, tickFont));
    }
    canvas.text({box.x + box.width / 2.0, box.getBottom() + 36.0}, panel.x.label, labelFont,
                textInk, Align::Middle);
    canvas.textUpwards({box.x - widest - 17.0, box.y + box.height / 2.0}, panel.y.label, labelFont,
                       textInk);
}

bool isWithin(Box const& box, FigurePoint const& place)
{
    constexpr double slack = 0.01;
    return place.x >= box.x - slack && place.x <= box.getRight() + slack &&
           place.y >= box.y - slack && place.y <= box.getBottom() + slack;
}

/// Blue dots on a green line lie in its gaps.
Dashes chooseDashes(FigureLine const& line)
{
    if (line.isOnAnother && line.tone == FigureTone::Blue) {
        return {{0.0, greenDash + greenGap}, 0.5 * greenGap};
    }
    return PanelStyle::chooseDashes(line.tone);
}

/// Those on the frame are seen whole.
void drawKeys(Canvas& canvas, FigurePanel const& panel, Box const& box)
{
    constexpr double stemWidth = 0.9;
    Placement const placement(panel, box);
    for (FigureKey const& key : panel.keys) {
        for (FigurePoint const& handle : key.handles) {
            FigurePoint const end = placement.place(handle);
            canvas.clip(box);
            canvas.line({placement.place(key.key), end}, chooseInk(key.tone), stemWidth);
            canvas.unclip();
            if (isWithin(box, end)) {
                drawHandle(canvas, end, key.tone);
            }
        }
    }
    for (FigureKey const& key : panel.keys) {
        if (isWithin(box, placement.place(key.key))) {
            drawKey(canvas, placement.place(key.key), key.tone);
        }
    }
}

/// Where a line is seen last, from left to right.
struct LineEnd {
    FigureLine const* line;
    FigurePoint place;
    bool isAtRight; ///< else the line leaves the panel there
};

std::optional<LineEnd> findEnd(FigureLine const& line, FigurePanel const& panel,
                               Placement const& placement)
{
    double const slack = 1e-6 * (panel.y.high - panel.y.low);
    for (std::size_t index = line.points.size(); index-- > 0;) {
        FigurePoint const& point = line.points[index];
        if (point.y >= panel.y.low - slack && point.y <= panel.y.high + slack) {
            bool const isAtRight = index + 1 == line.points.size();
            return LineEnd{&line, placement.place(point), isAtRight};
        }
    }
    return {};
}

/// Labels of lines that leave the panel stand inside, those of others at its right, none over
/// another.
void drawEndLabels(Canvas& canvas, FigurePanel const& panel, Box const& box)
{
    Placement const placement(panel, box);
    std::vector<LineEnd> ends;
    for (FigureLine const& line : panel.lines) {
        if (auto const end = findEnd(line, panel, placement); end && !line.label.empty()) {
            ends.push_back(*end);
        }
    }
    std::stable_sort(ends.begin(), ends.end(),
                     [](LineEnd const& a, LineEnd const& b) { return a.place.y < b.place.y; });
    double lowestAtRight = box.y - lineHeight;
    double lowestInside = box.y;
    for (LineEnd const& end : ends) {
        Ink const ink = chooseInk(end.line->tone);
        if (end.isAtRight) {
            lowestAtRight = std::max(end.place.y, lowestAtRight + lineHeight);
            canvas.text({box.getRight() + 6.0, lowestAtRight + 4.0}, end.line->label, endFont, ink,
                        Align::Left);
        } else {
            double const wanted = std::min(end.place.y + 4.0, box.getBottom() - 5.0);
            lowestInside = std::max(wanted, lowestInside + lineHeight);
            canvas.text({end.place.x - 6.0, lowestInside}, end.line->label, endFont, ink,
                        Align::Right, true);
        }
    }
}

} // namespace

Ink PanelStyle::chooseInk(FigureTone tone)
{
    switch (tone) {
    case FigureTone::Red: return {0.76, 0.19, 0.15};
    case FigureTone::Green: return {0.11, 0.50, 0.25};
    case FigureTone::Blue: return {0.13, 0.36, 0.69};
    case FigureTone::Neutral: break;
    }
    return textInk;
}

Ink PanelStyle::chooseHistogramInk(FigureTone tone)
{
    Ink ink = chooseInk(tone);
    ink.opacity = 0.17;
    return ink;
}

Dashes PanelStyle::chooseDashes(FigureTone tone)
{
    switch (tone) {
    case FigureTone::Green: return {{greenDash, greenGap}};
    case FigureTone::Blue: return {{0.0, 4.4}}; // dots, by the round ends of lines
    case FigureTone::Red:
    case FigureTone::Neutral: break;
    }
    return {};
}

double PanelStyle::chooseWidth(FigureTone tone)
{
    return tone == FigureTone::Blue ? 2.5 : 1.8; // dots look thinner
}

Dashes PanelStyle::getReferenceDashes()
{
    return {{2.5, 3.5}};
}

void PanelStyle::drawKey(Canvas& canvas, FigurePoint const& place, FigureTone tone)
{
    canvas.circle(place, keyRadius, chooseInk(tone), white);
}

void PanelStyle::drawHandle(Canvas& canvas, FigurePoint const& place, FigureTone tone)
{
    canvas.circle(place, handleRadius, white, chooseInk(tone));
}

void PanelStyle::drawMark(Canvas& canvas, FigurePoint const& place, FigureTone tone)
{
    canvas.circle(place, markRadius, white, chooseInk(tone));
    canvas.circle(place, 1.0, chooseInk(tone), chooseInk(tone));
}

void drawPanel(Canvas& canvas, FigurePanel const& panel, Box const& box)
{
    Placement const placement(panel, box);
    drawHistograms(canvas, panel, box);
    drawTicks(canvas, panel, box);
    canvas.frame(box, frameInk, 1.0);
    constexpr double aroundLines = 1.5; // on the frame they are seen, too
    canvas.clip({box.x - aroundLines, box.y - aroundLines, box.width + 2.0 * aroundLines,
                 box.height + 2.0 * aroundLines});
    canvas.line(placement.place(panel.reference), referenceInk, referenceWidth,
                getReferenceDashes());
    for (FigureLine const& line : panel.lines) {
        canvas.line(placement.place(line.points), chooseInk(line.tone), chooseWidth(line.tone),
                    chooseDashes(line));
    }
    canvas.unclip();
    drawKeys(canvas, panel, box);
    for (FigureMark const& mark : panel.marks) {
        if (isWithin(box, placement.place(mark.place))) {
            drawMark(canvas, placement.place(mark.place), mark.tone);
        }
    }
    drawEndLabels(canvas, panel, box);
    canvas.text({box.x, box.y - 11.0}, panel.title, panelTitleFont, textInk, Align::Left);
    canvas.text({box.getRight(), box.y - 11.0}, panel.remark, remarkFont, quietInk, Align::Right);
}
