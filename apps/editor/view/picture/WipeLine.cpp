#include "editor/view/picture/WipeLine.h"

#include "editor/view/picture/PictureWidget.h"
#include "editor/view/window/Theme.h"

#include <QKeyEvent>
#include <QLineF>
#include <QPainter>
#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <utility>

namespace {

constexpr double toKnob = 64.0; // widget pixels from the middle
constexpr double middleRadius = 7.0;
constexpr double knobRadius = 5.0;
constexpr double wipeReach = 11.0; // how near the cursor is on a grip
constexpr double lineReach = 5.0;
constexpr double beyond = 1e5; // as far as any pane reaches
constexpr double movePerKey = 10.0;
constexpr double turnPerKey = 5.0;
constexpr double turn = 360.0;

double toRadians(double degrees)
{
    return degrees * std::numbers::pi / (turn / 2);
}

} // namespace

WipeLine::WipeLine(PictureWidget& itsPicture) : QObject(&itsPicture), picture(itsPicture) {}

void WipeLine::setShown(bool isToBeShown)
{
    shown = isToBeShown;
    drag.reset();
    if (shown && !isPlaced) {
        reset();
    }
    picture.update();
}

void WipeLine::reset()
{
    middle = picture.toPicture(QRectF(picture.getPane()).center());
    angle = 0.0;
    isPlaced = true;
    picture.update();
}

QPointF WipeLine::getMiddle() const
{
    return picture.toWidget(middle);
}

QPointF WipeLine::getAcross() const
{
    return {std::cos(toRadians(angle)), std::sin(toRadians(angle))};
}

QPointF WipeLine::getAlong() const
{
    return {-getAcross().y(), getAcross().x()};
}

QPolygonF WipeLine::getSourceSide() const
{
    QPointF const along = getAlong() * beyond;
    QPointF const back = getAcross() * -beyond;
    QPointF const place = getMiddle();
    QPolygonF const half(
        {place + along, place - along, place - along + back, place + along + back});
    return half.intersected(QPolygonF(QRectF(picture.getPane())));
}

std::vector<WipeLine::Label> WipeLine::findLabels() const
{
    struct Corner {
        Qt::Corner name;
        QPointF place;
    };
    QRectF const pane(picture.getPane());
    std::array const corners{Corner{Qt::TopLeftCorner, pane.topLeft()},
                             Corner{Qt::TopRightCorner, pane.topRight()},
                             Corner{Qt::BottomLeftCorner, pane.bottomLeft()},
                             Corner{Qt::BottomRightCorner, pane.bottomRight()}};
    auto const isNearer = [this](Corner const& a, Corner const& b) {
        return QPointF::dotProduct(a.place - b.place, getAcross()) < -1.0; // pixels
    };
    auto const* const source = std::min_element(corners.begin(), corners.end(), isNearer);
    auto const* const result = std::max_element(corners.begin(), corners.end(), isNearer);
    std::vector<Label> labels;
    if (QPointF::dotProduct(source->place - getMiddle(), getAcross()) < 0.0) {
        labels.push_back({source->name, true});
    }
    if (QPointF::dotProduct(result->place - getMiddle(), getAcross()) > 0.0) {
        labels.push_back({result->name, false});
    }
    return labels;
}

void WipeLine::paint(QPainter& painter) const
{
    QPointF const place = getMiddle();
    QPointF const centre = QRectF(picture.getPane()).center();
    double const diagonal = std::hypot(picture.width(), picture.height());
    QPointF const near =
        place + getAlong() * QPointF::dotProduct(centre - place, getAlong()); // to the centre
    QLineF const line(near - getAlong() * diagonal, near + getAlong() * diagonal);
    if (QLineF(near, centre).length() > diagonal) {
        return;
    }
    painter.setRenderHint(QPainter::Antialiasing);
    for (auto const& [colour, width] :
         {std::pair(QColor(0, 0, 0, 200), 3.5), std::pair(Theme::accent, 1.5)}) {
        painter.setPen(QPen(colour, width));
        painter.setBrush(Qt::NoBrush);
        painter.drawLine(line);
        painter.setBrush(QColor(0, 0, 0, 120));
        painter.drawEllipse(place, middleRadius, middleRadius);
        painter.drawEllipse(place + getAlong() * toKnob, knobRadius, knobRadius);
        painter.drawEllipse(place - getAlong() * toKnob, knobRadius, knobRadius);
    }
}

std::optional<WipeLine::Grip> WipeLine::findGrip(QPointF const& place) const
{
    QPointF const way = place - getMiddle();
    double const along = std::fabs(QPointF::dotProduct(way, getAlong()));
    double const across = std::fabs(QPointF::dotProduct(way, getAcross()));
    if (std::hypot(along, across) <= wipeReach) {
        return Grip::Middle;
    }
    if (std::hypot(along - toKnob, across) <= wipeReach) {
        return Grip::Knob;
    }
    return across <= lineReach ? std::optional(Grip::Line) : std::nullopt;
}

bool WipeLine::press(QPointF const& place)
{
    std::optional<Grip> const grip = shown ? findGrip(place) : std::nullopt;
    if (grip.has_value()) {
        drag = Drag{*grip, getMiddle(), angle, place};
    }
    return grip.has_value();
}

bool WipeLine::move(QPointF const& place)
{
    if (!drag.has_value()) {
        std::optional<Grip> const grip = shown ? findGrip(place) : std::nullopt;
        if (grip.has_value()) {
            picture.setCursor(*grip == Grip::Knob ? Qt::PointingHandCursor : Qt::SizeAllCursor);
        }
        return grip.has_value();
    }
    QPointF const way = place - drag->begin;
    switch (drag->grip) {
    case Grip::Middle: middle = picture.toPicture(drag->before + way); break;
    case Grip::Line:
        middle =
            picture.toPicture(drag->before + getAcross() * QPointF::dotProduct(way, getAcross()));
        break;
    case Grip::Knob: {
        // Either knob turns; neither jumps to the other one's place.
        QLineF const then(drag->before, drag->begin);
        QLineF const now(drag->before, place);
        angle = std::remainder(drag->angleBefore + then.angle() - now.angle(), turn);
        break;
    }
    }
    picture.update();
    return true;
}

bool WipeLine::release()
{
    return std::exchange(drag, {}).has_value();
}

bool WipeLine::pressKey(QKeyEvent const& event)
{
    if (drag.has_value() && event.key() == Qt::Key_Escape) {
        middle = picture.toPicture(drag->before);
        angle = drag->angleBefore;
        drag.reset();
        picture.update();
        return true;
    }
    if (!shown || !event.modifiers().testFlag(Qt::AltModifier)) {
        return false;
    }
    auto const shift = [this](double by) {
        middle = picture.toPicture(getMiddle() + getAcross() * by);
    };
    switch (event.key()) {
    case Qt::Key_Left: shift(-movePerKey); break;
    case Qt::Key_Right: shift(movePerKey); break;
    case Qt::Key_Up: angle = std::remainder(angle - turnPerKey, turn); break;
    case Qt::Key_Down: angle = std::remainder(angle + turnPerKey, turn); break;
    default: return false;
    }
    picture.update();
    return true;
}

#include "editor/view/picture/moc_WipeLine.cpp"
