// A figure: titles, panels beside each other, a legend.

#include "plots/cairo/FigureDrawing.h"

#include "plots/cairo/PanelDrawing.h"

#include <algorithm>
#include <functional>
#include <utility>

using namespace PanelStyle;

namespace {

constexpr double margin = 16.0;
constexpr double panelWidth = 310.0;
constexpr double panelHeight = 290.0;
constexpr double leftOfPanel = 70.0; // ticks and label
constexpr double rightOfPanel = 26.0;
constexpr double aboveTitle = 36.0;
constexpr double aboveSubtitle = 56.0;
constexpr double abovePanels = 94.0;
constexpr double aboveLegend = 68.0; // ticks and label
constexpr double belowLegend = 24.0;

constexpr Font titleFont{17.0, true};
constexpr Font subtitleFont{12.0};
constexpr Font legendFont{11.5};

constexpr double sampleWidth = 28.0; // of a line in the legend
constexpr double sampleGap = 7.0;
constexpr double entryGap = 26.0;
constexpr double rowHeight = 20.0;

/// A sample, drawn with its left end at a place, and what it stands for.
struct LegendEntry {
    std::function<void(FigurePoint const&)> drawSample;
    std::string text;
};

template <typename Things>
void addTones(std::vector<FigureTone>& tones, Things const& things)
{
    for (auto const& thing : things) {
        if (std::find(tones.begin(), tones.end(), thing.tone) == tones.end()) {
            tones.push_back(thing.tone);
        }
    }
    std::sort(tones.begin(), tones.end());
}

char const* nameTone(FigureTone tone)
{
    switch (tone) {
    case FigureTone::Red: return "red";
    case FigureTone::Green: return "green";
    case FigureTone::Blue: return "blue";
    case FigureTone::Neutral: break;
    }
    return "red, green and blue alike";
}

/// The legend of what a figure's panels show.
class Legend {
public:
    Legend(Canvas& legendCanvas, Figure const& figure) : canvas(legendCanvas)
    {
        std::vector<FigureTone> lineTones;
        std::vector<FigureTone> keyTones;
        std::vector<FigureTone> markTones;
        std::vector<FigureTone> histogramTones;
        bool hasReference = false;
        for (FigurePanel const& panel : figure.panels) {
            addTones(lineTones, panel.lines);
            addTones(keyTones, panel.keys);
            addTones(markTones, panel.marks);
            addTones(histogramTones, panel.histograms);
            hasReference = hasReference || !panel.reference.empty();
        }
        for (FigureTone const tone : lineTones) {
            addLine(chooseInk(tone), chooseWidth(tone), chooseDashes(tone), nameTone(tone));
        }
        if (hasReference) {
            addLine(referenceInk, referenceWidth, getReferenceDashes(), figure.referenceText);
        }
        if (!keyTones.empty()) {
            addKey(keyTones.front());
        }
        if (!markTones.empty()) {
            addMark(markTones.front(), figure.markText);
        }
        if (!histogramTones.empty()) {
            addHistogram(histogramTones, figure.histogramText);
        }
    }

    /// Draws rows within a figure of that width, the first on the line `y`; gives the last one's
    /// line.
    double draw(double y, double width) const
    {
        double x = margin + leftOfPanel;
        double const textWidth = width - margin - x - sampleWidth - sampleGap;
        for (LegendEntry const& entry : entries) {
            std::string const text = canvas.cut(entry.text, legendFont, textWidth);
            double const entryWidth = sampleWidth + sampleGap + canvas.measure(text, legendFont);
            if (x + entryWidth > width - margin) {
                x = margin + leftOfPanel;
                y += rowHeight;
            }
            entry.drawSample({x, y - 4.0});
            canvas.text({x + sampleWidth + sampleGap, y}, text, legendFont, textInk, Align::Left);
            x += entryWidth + entryGap;
        }
        return y;
    }

private:
    void addLine(Ink const& ink, double width, Dashes const& dashes, std::string const& text)
    {
        entries.push_back(
            {[=, this](FigurePoint const& place) {
                 canvas.line({place, {place.x + sampleWidth, place.y}}, ink, width, dashes);
             },
             text});
    }

    void addKey(FigureTone tone)
    {
        entries.push_back({[=, this](FigurePoint const& place) {
                               FigurePoint const handle{place.x + sampleWidth - 4.0, place.y};
                               FigurePoint const key{place.x + 8.0, place.y};
                               canvas.line({key, handle}, chooseInk(tone), 1.0);
                               drawKey(canvas, key, tone);
                               drawHandle(canvas, handle, tone);
                           },
                           "key and handle"});
    }

    void addMark(FigureTone tone, std::string const& text)
    {
        entries.push_back({[=, this](FigurePoint const& place) {
                               drawMark(canvas, {place.x + sampleWidth - 8.0, place.y}, tone);
                           },
                           text});
    }

    void addHistogram(std::vector<FigureTone> const& tones, std::string const& text)
    {
        entries.push_back({[=, this](FigurePoint const& place) {
                               Box const box{place.x, place.y - 5.0, sampleWidth, 10.0};
                               for (FigureTone const tone : tones) {
                                   canvas.fill(box, chooseHistogramInk(tone));
                               }
                           },
                           text});
    }

    Canvas& canvas;
    std::vector<LegendEntry> entries;
};

} // namespace

FigureSize measureFigure(Figure const& figure)
{
    double const pitch = leftOfPanel + panelWidth + rightOfPanel;
    double const width = 2.0 * margin + pitch * static_cast<double>(figure.panels.size());
    auto const surface = makeImage(1, 1); // texts are measured on it
    Canvas canvas(surface.get());
    return {width, Legend(canvas, figure).draw(abovePanels + panelHeight + aboveLegend, width) +
                       belowLegend};
}

void drawOn(Canvas& canvas, Figure const& figure)
{
    FigureSize const size = measureFigure(figure);
    canvas.fill({0.0, 0.0, size.width, size.height}, white);
    double x = margin + leftOfPanel;
    double const textWidth = size.width - x - margin;
    canvas.text({x, aboveTitle}, canvas.cut(figure.title, titleFont, textWidth), titleFont, textInk,
                Align::Left);
    canvas.text({x, aboveSubtitle}, canvas.cut(figure.subtitle, subtitleFont, textWidth),
                subtitleFont, quietInk, Align::Left);
    for (FigurePanel const& panel : figure.panels) {
        drawPanel(canvas, panel, {x, abovePanels, panelWidth, panelHeight});
        x += leftOfPanel + panelWidth + rightOfPanel;
    }
    Legend(canvas, figure).draw(abovePanels + panelHeight + aboveLegend, size.width);
}
