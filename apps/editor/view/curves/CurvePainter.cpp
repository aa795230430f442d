#include "editor/view/curves/CurvePainter.h"

#include "editor/view/window/Theme.h"

#include <QFontMetricsF>
#include <QPolygonF>
#include <algorithm>
#include <cmath>
#include <functional>
#include <vector>

namespace {

using CurveEditing::Side;
using Unit = FigureAxis::Unit;

constexpr double keyRadius = 4.0; // pixels
constexpr double handleRadius = 3.5;
constexpr double markRadius = 5.0;
constexpr double labelGap = 14.0; // between two labels
constexpr double highest = 0.85;  // of the graph that a histogram fills
constexpr double otherOpacity = 0.55;
constexpr double freshOpacity = 0.32; // of a histogram
constexpr double staleOpacity = 0.12;

/// Distinct without colour.
constexpr Qt::PenStyle styles[] = {Qt::SolidLine, Qt::DashLine, Qt::DotLine};
constexpr char const* names[] = {"R", "G", "B"};

/// As many ticks as have room for their labels.
template <typename Measure>
std::vector<PlotTick> fitTicks(FigureAxis const& axis, double pixels, Measure const& measure)
{
    constexpr double leastDistance = 38.0; // pixels
    for (double steps = std::max(1.0, std::floor(pixels / leastDistance));; steps -= 1.0) {
        std::vector<PlotTick> ticks = makeTicks(axis, steps);
        double widest = 0.0;
        for (PlotTick const& tick : ticks) {
            widest = std::max(widest, measure(tick));
        }
        double const distance =
            ticks.size() < 2 ? pixels
                             : (ticks[1].place - ticks[0].place) / (axis.high - axis.low) * pixels;
        if (steps <= 1.0 || widest + labelGap <= distance) {
            return ticks;
        }
    }
}

/// A value on an axis of stops, for a person.
QString formatPower(double stop)
{
    return QString::number(std::exp2(stop), 'g', 3);
}

/// The count that fills the histogram's height: the most, but for the few classes that tower above
/// all others.
double chooseFull(std::array<std::vector<double>, 3> const& counts, int channel)
{
    constexpr std::ptrdiff_t nbTowers = 4;
    std::vector<double> all;
    for (int each = 0; each < CurveEditor::nbChannels; ++each) {
        if (channel == CurveDisplay::allChannels || channel == each) {
            auto const& one = counts[static_cast<std::size_t>(each)];
            all.insert(all.end(), one.begin(), one.end());
        }
    }
    double const most = *std::max_element(all.begin(), all.end());
    if (std::ssize(all) <= nbTowers) {
        return most;
    }
    std::nth_element(all.begin(), all.begin() + nbTowers, all.end(), std::greater<>());
    double const usual = all[static_cast<std::size_t>(nbTowers)];
    return usual > 0.0 ? std::min(most, 2.0 * usual) : most;
}

QColor fade(QColor color, double opacity)
{
    color.setAlphaF(static_cast<float>(opacity));
    return color;
}

} // namespace

CurvePainter::CurvePainter(QPainter& itsPainter, CurveModel const& shownModel,
                           CurveScale const& shownScale, QFont const& font)
    : painter(itsPainter), model(shownModel), scale(shownScale), hits(model, scale),
      display(model.getDisplay()), areAlike(model.editor.areAlike())
{
    painter.setFont(font);
    ticksX = listTicksX(); // measured in that font
    ticksY = listTicksY();
}

Qt::PenStyle CurvePainter::getStyle(int channel)
{
    return styles[channel];
}

bool CurvePainter::isWithin(QPointF const& place) const
{
    constexpr double beyond = 20.0;
    return std::isfinite(place.x()) && std::isfinite(place.y()) &&
           QRectF(0.0, 0.0, scale.getWidth(), scale.getHeight())
               .adjusted(-beyond, -beyond, beyond, beyond)
               .contains(place);
}

QColor CurvePainter::chooseColor(int channel) const
{
    return Theme::channels[channel];
}

// ---- Grid ----

double CurvePainter::measureTickX(PlotTick const& tick) const
{
    QFontMetricsF const metrics(painter.font());
    double const own = metrics.horizontalAdvance(QString::fromStdString(tick.label));
    return scale.getAxis() == CurveAxis::Stops
               ? std::max(own, metrics.horizontalAdvance(formatPower(tick.place)))
               : own;
}

std::vector<PlotTick> CurvePainter::listTicksX() const
{
    GraphRange const& range = scale.getRange();
    FigureAxis const axis{range.left, range.getRight(), "",
                          scale.getAxis() == CurveAxis::Stops ? Unit::Stop : Unit::Value};
    return fitTicks(axis, scale.getWidth() - scale.getStart(),
                    [this](PlotTick const& tick) { return measureTickX(tick); });
}

std::vector<PlotTick> CurvePainter::listTicksY() const
{
    GraphRange const& range = scale.getRange();
    double const line = QFontMetricsF(painter.font()).height();
    return fitTicks({range.bottom, range.getTop(), "", Unit::Value}, scale.getHeight(),
                    [line](PlotTick const&) { return line; });
}

void CurvePainter::drawGrid()
{
    double const width = scale.getWidth();
    double const height = scale.getHeight();
    painter.setPen(Theme::grid);
    for (PlotTick const& tick : ticksY) {
        double const y = scale.toPlaceY(tick.place);
        painter.drawLine(QPointF(scale.getStart(), y), QPointF(width, y));
    }
    for (PlotTick const& tick : ticksX) {
        double const x = scale.toPlaceOfCoordinate(tick.place);
        painter.drawLine(QPointF(x, 0.0), QPointF(x, height));
    }
    if (scale.getAxis() == CurveAxis::Stops) {
        painter.fillRect(QRectF(0.0, 0.0, scale.getStart(), height), Theme::surround);
        painter.setPen(Theme::frame);
        painter.drawLine(QPointF(scale.getStart(), 0.0), QPointF(scale.getStart(), height));
    }
    drawSquare();
}

// ---- Labels ----

void CurvePainter::drawLabels()
{
    drawLabelsY();
    drawLabelsX();
    if (scale.getAxis() == CurveAxis::Stops) {
        painter.setPen(Theme::dimText);
        painter.drawText(QRectF(0.0, 0.0, scale.getStart(), scale.getHeight() - 4.0),
                         Qt::AlignHCenter | Qt::AlignBottom, QString::fromUtf8("≤ 0"));
    }
}

/// Readable on a histogram, too.
void CurvePainter::drawLabel(QPointF const& place, QString const& label)
{
    constexpr double opacity = 0.65;
    QRectF const around = QFontMetricsF(painter.font()).boundingRect(label).translated(place);
    painter.fillRect(around.adjusted(-1.0, 0.0, 2.0, 0.0), fade(Theme::field, opacity));
    painter.setPen(Theme::dimText);
    painter.drawText(place, label);
}

void CurvePainter::drawLabelsX()
{
    double const ascent = QFontMetricsF(painter.font()).ascent();
    for (PlotTick const& tick : ticksX) {
        double const x = scale.toPlaceOfCoordinate(tick.place) + 3.0;
        if (x + measureTickX(tick) > scale.getWidth()) {
            continue;
        }
        drawLabel({x, scale.getHeight() - 4.0}, QString::fromStdString(tick.label));
        if (scale.getAxis() == CurveAxis::Stops) {
            drawLabel({x, ascent + 3.0}, formatPower(tick.place));
        }
    }
}

/// The x axis has its own rows.
void CurvePainter::drawLabelsY()
{
    double const line = QFontMetricsF(painter.font()).height();
    double const top = scale.getAxis() == CurveAxis::Stops ? 2.0 * line : line;
    for (PlotTick const& tick : ticksY) {
        double const y = scale.toPlaceY(tick.place);
        if (y > top && y < scale.getHeight() - line - 3.0) {
            drawLabel({scale.getStart() + 4.0, y - 3.0}, QString::fromStdString(tick.label));
        }
    }
}

/// From 0 to 1, and the line of what stays as it is.
void CurvePainter::drawSquare()
{
    double const left = std::max(scale.toPlaceX(0.0), scale.getStart());
    double const right = scale.toPlaceX(1.0);
    double const bottom = scale.toPlaceY(0.0);
    double const top = scale.toPlaceY(1.0);
    painter.setPen(Theme::frame);
    painter.setBrush(Qt::NoBrush);
    painter.drawRect(QRectF(QPointF(left, top), QPointF(right, bottom)));
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(Theme::grid, 1.2));
    QPolygonF unchanged;
    for (double x = scale.getStart(); x <= scale.getWidth(); x += 2.0) {
        unchanged.append(QPointF(x, scale.toPlaceY(scale.toX(x))));
    }
    painter.drawPolyline(unchanged);
    painter.restore();
}

// ---- Histogram ----

void CurvePainter::drawHistogram(double devicePixels)
{
    if (model.histogram.getCounts() == nullptr ||
        display.histogram == CurveDisplay::Histogram::None) {
        return;
    }
    GraphRange const& range = scale.getRange();
    bool const hasStops = scale.getAxis() == CurveAxis::Stops;
    double const width = scale.getWidth() - scale.getStart();
    auto const nbClasses = static_cast<std::size_t>(std::max(1.0, width * devicePixels / 2.0));
    CurveHistogram::Classes const& classes = model.histogram.classify(
        {range.left, range.getRight(), "", hasStops ? Unit::Stop : Unit::Value}, nbClasses);
    double const full = chooseFull(classes.histogram.getCounts(), display.channel);
    auto const measure = [&](double count) {
        double const share =
            full <= 0.0
                ? (count > 0.0 ? 1.0 : 0.0)
                : (display.isLogarithmic ? std::log1p(count) / std::log1p(full) : count / full) *
                      display.histogramZoom;
        return std::min(share, 1.0) * highest * scale.getHeight();
    };
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing, false);
    painter.setPen(Qt::NoPen);
    painter.setCompositionMode(QPainter::CompositionMode_Screen);
    double const bottom = scale.getHeight();
    double const step = width / static_cast<double>(nbClasses);
    for (int channel = 0; channel < CurveEditor::nbChannels; ++channel) {
        if (!model.editor.isEdited(channel)) {
            continue;
        }
        auto const index = static_cast<std::size_t>(channel);
        QPolygonF outline({QPointF(scale.getStart(), bottom)});
        double x = scale.getStart();
        for (double const count : classes.histogram.getCounts()[index]) {
            double const y = bottom - measure(count);
            outline << QPointF(x, y) << QPointF(x + step, y);
            x += step;
        }
        outline << QPointF(scale.getWidth(), bottom);
        painter.setBrush(
            fade(chooseColor(channel), model.histogram.isStale() ? staleOpacity : freshOpacity));
        painter.drawPolygon(outline);
        if (hasStops) {
            double const barWidth = (scale.getStart() - 6.0) / 3.0;
            double const bar = measure(classes.withoutStop[index]);
            painter.drawRect(QRectF(3.0 + channel * barWidth, bottom - bar, barWidth - 1.0, bar));
        }
    }
    painter.restore();
}

// ---- Lines ----

void CurvePainter::drawLine(Line const& line, QPen const& pen)
{
    QPolygonF places;
    for (GePoint2<float> const& point : line) {
        if (std::isfinite(point.y)) {
            places.append(hits.toPlace(point));
        }
    }
    painter.setPen(pen);
    painter.drawPolyline(places);
}

void CurvePainter::drawTransfers()
{
    if (!display.hasTransfer) {
        return;
    }
    std::array<Line, CurveEditor::nbChannels> lines;
    for (int channel = 0; channel < CurveEditor::nbChannels; ++channel) {
        lines[static_cast<std::size_t>(channel)] = model.lines.sampleTransfer(channel, scale);
    }
    if (lines[0] == lines[1] && lines[0] == lines[2]) {
        drawLine(lines[0], QPen(Theme::dimText, 1.2, Qt::DashDotLine));
        return;
    }
    for (int channel = 0; channel < CurveEditor::nbChannels; ++channel) {
        double const opacity = model.editor.isEdited(channel) ? 0.75 : 0.35;
        drawLine(lines[static_cast<std::size_t>(channel)],
                 QPen(fade(chooseColor(channel), opacity), 1.2, Qt::DashDotLine));
    }
}

void CurvePainter::drawBoth()
{
    if (!display.hasBoth) {
        return;
    }
    auto const lines = model.lines.sampleBoth(scale);
    if (lines[0] == lines[1] && lines[0] == lines[2]) {
        drawLine(lines[0], QPen(Theme::accent, 1.6, Qt::DashDotDotLine));
        return;
    }
    for (int channel = 0; channel < CurveEditor::nbChannels; ++channel) {
        bool const isEdited = model.editor.isEdited(channel);
        drawLine(lines[static_cast<std::size_t>(channel)],
                 QPen(fade(chooseColor(channel), isEdited ? 1.0 : otherOpacity), 1.6,
                      Qt::DashDotDotLine));
    }
}

/// Of two curves that are the same, one shows between the dashes of the other.
void CurvePainter::drawCurves(std::optional<int> hovered)
{
    constexpr double wide = 2.0;
    constexpr double hoveredWidth = 3.0;
    if (areAlike && display.channel == CurveDisplay::allChannels) {
        drawLine(model.lines.sampleCurve(0, scale),
                 QPen(Theme::text, hovered.has_value() ? hoveredWidth : wide));
        return;
    }
    std::array<Line, CurveEditor::nbChannels> drawn;
    int const lead = model.editor.getLead();
    for (int const channel : {(lead + 2) % 3, (lead + 1) % 3, lead}) {
        bool const isEdited = model.editor.isEdited(channel);
        Line const line = model.lines.sampleCurve(channel, scale);
        bool const isOnAnother = std::find(drawn.begin(), drawn.end(), line) != drawn.end();
        double const width = hovered == channel ? hoveredWidth : isEdited ? wide : 1.4;
        Qt::PenStyle const style = isOnAnother && channel == 0 ? Qt::DashLine : getStyle(channel);
        drawLine(line, QPen(fade(chooseColor(channel), isEdited ? 1.0 : otherOpacity), width, style,
                            Qt::FlatCap));
        drawn[static_cast<std::size_t>(channel)] = line;
        drawName(line, channel);
    }
}

/// Where the line leaves the graph, each a little further within, so that names of lines that end
/// at one place stand beside or below each other.
void CurvePainter::drawName(Line const& line, int channel)
{
    double const right = scale.getWidth() - 14.0 - 13.0 * (CurveEditor::nbChannels - 1 - channel);
    double const room = QFontMetricsF(painter.font()).height();
    for (auto point = line.rbegin(); point != line.rend(); ++point) {
        QPointF const place = hits.toPlace(*point);
        if (place.x() <= right && place.y() > (2.0 + channel) * room &&
            place.y() < scale.getHeight() - 2.0 * room) {
            painter.setPen(chooseColor(channel));
            painter.drawText(place + QPointF(6.0, 0.0), names[channel]);
            return;
        }
    }
}

// ---- Marks ----

void CurvePainter::drawMarks()
{
    for (CurveMark const& mark : model.marks.list()) {
        drawMark(mark);
    }
}

void CurvePainter::drawDisc(QPointF const& place, int channel, bool isFilled)
{
    if (isWithin(place)) {
        painter.setPen(QPen(isFilled ? Theme::field : chooseColor(channel), 1.4));
        painter.setBrush(isFilled ? QBrush(chooseColor(channel)) : QBrush(Theme::field));
        double const radius = isFilled ? markRadius : markRadius - 1.5;
        painter.drawEllipse(place, radius, radius);
    }
}

/// On the curve at what the transfer makes of the colour, and on the other lines that are shown at
/// the colour itself.
void CurvePainter::drawMark(CurveMark const& mark)
{
    CurveLines::Color const between = model.lines.transfer(mark.in);
    CurveLines::Color const out = model.lines.finish(mark.in);
    auto const places = hits.placeMark(mark);
    for (int channel = 0; channel < CurveEditor::nbChannels; ++channel) {
        auto const index = static_cast<std::size_t>(channel);
        if (!model.editor.isEdited(channel)) {
            continue;
        }
        if (display.hasTransfer) {
            drawDisc(hits.toPlace({mark.in[index], between[index]}), channel, false);
        }
        if (display.hasBoth) {
            drawDisc(hits.toPlace({mark.in[index], out[index]}), channel, false);
        }
        QPointF const place = places[index];
        if (isWithin(place)) {
            painter.setPen(
                QPen(fade(chooseColor(channel), mark.isSelected ? 0.7 : 0.35), 1.0, Qt::DotLine));
            painter.drawLine(place, QPointF(place.x(), scale.getHeight()));
        }
        drawDisc(place, channel, true);
        if (isWithin(place) && mark.number > 0) {
            painter.setPen(mark.isSelected ? Theme::accent : Theme::text);
            painter.drawText(place + QPointF(markRadius + 2.0, markRadius + 8.0),
                             QString::number(mark.number));
        }
    }
}

// ---- Keys ----

void CurvePainter::drawHandles(CurveEditor::Key const& only,
                               std::optional<CurveGrip> const& hovered)
{
    QPointF const key = hits.placeKey(only);
    for (Side const side : {Side::Incoming, Side::Outgoing}) {
        bool const isHovered = hovered == CurveGrip{only, side};
        QPointF const handle = hits.placeHandle(only, side);
        painter.setPen(QPen(isHovered ? Theme::accent : Theme::text, 1.2));
        painter.setBrush(isHovered ? Theme::accent : Theme::field);
        painter.drawLine(key, handle);
        painter.drawEllipse(handle, handleRadius, handleRadius);
    }
}

void CurvePainter::drawKeys(std::optional<CurveGrip> const& hovered)
{
    if (auto const only = model.editor.getOnlyKey()) {
        drawHandles(*only, hovered);
    }
    bool const isOne = areAlike && display.channel == CurveDisplay::allChannels;
    int const lead = model.editor.getLead();
    for (int const channel : {(lead + 2) % 3, (lead + 1) % 3, lead}) {
        if (!model.editor.isEdited(channel) || (isOne && channel != lead)) {
            continue;
        }
        CurvePoints const points = model.editor.getCurve(channel);
        for (std::size_t key = 0; key < CurveEditing::countKeys(points); ++key) {
            bool const isChosen = model.editor.isSelected({channel, key});
            bool const isHovered = hovered == CurveGrip{{channel, key}};
            QColor const color = isOne ? Theme::text : chooseColor(channel);
            double const radius = isHovered ? keyRadius + 1.5 : keyRadius;
            painter.setPen(QPen(isChosen ? Theme::accent : color, 1.4));
            painter.setBrush(isChosen ? Theme::accent : Theme::field);
            QPointF const place = hits.placeKey({channel, key});
            painter.drawRect(
                QRectF(place.x() - radius, place.y() - radius, 2.0 * radius, 2.0 * radius));
        }
    }
}
