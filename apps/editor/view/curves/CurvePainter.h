#pragma once

#include "editor/view/curves/CurveHits.h"
#include "plots/PlotScale.h"

#include <QFont>
#include <QPainter>
#include <optional>
#include <vector>

/// Draws a graph, from behind to before: grid, histogram, labels, transfer, curves, both together,
/// marks, keys. Curves differ by colour and by dashes; those that are the same are one.
class CurvePainter {
public:
    /// All of it lives longer.
    CurvePainter(QPainter& itsPainter, CurveModel const& shownModel, CurveScale const& shownScale,
                 QFont const& font);

    /// By which a channel's lines are known without colour.
    static Qt::PenStyle getStyle(int channel);

    void drawGrid();
    void drawHistogram(double devicePixels);
    void drawLabels();
    void drawTransfers();
    void drawCurves(std::optional<int> hovered);
    void drawBoth();
    void drawMarks();
    void drawKeys(std::optional<CurveGrip> const& hovered);

private:
    using Line = CurveLines::Line;

    /// Both also give room to a tick's label.
    std::vector<PlotTick> listTicksX() const;
    std::vector<PlotTick> listTicksY() const;
    double measureTickX(PlotTick const& tick) const;
    void drawLabelsX();
    void drawLabelsY();
    void drawLabel(QPointF const& place, QString const& label);
    void drawSquare();
    void drawLine(Line const& line, QPen const& pen);
    void drawName(Line const& line, int channel);
    void drawMark(CurveMark const& mark);
    void drawDisc(QPointF const& place, int channel, bool isFilled);
    void drawHandles(CurveEditor::Key const& only, std::optional<CurveGrip> const& hovered);
    QColor chooseColor(int channel) const;
    bool isWithin(QPointF const& place) const;

    QPainter& painter;
    CurveModel const& model;
    CurveScale const& scale;
    CurveHits hits;
    CurveDisplay display;
    bool areAlike;
    std::vector<PlotTick> ticksX;
    std::vector<PlotTick> ticksY;
};
