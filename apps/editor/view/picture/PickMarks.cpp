#include "editor/view/picture/PickMarks.h"

#include "editor/view/picture/PictureWidget.h"
#include "editor/view/window/Theme.h"

#include <QKeyEvent>
#include <QMenu>
#include <QPainter>
#include <algorithm>
#include <cmath>

namespace {

constexpr double reach = 9.0; // how near to a mark the cursor is on it
constexpr double edgeReach = 4.0;
constexpr double ring = 6.0;
constexpr int tagSize = 16;
constexpr int dragBegins = 4; // widget pixels
constexpr int coarse = 10;    // pixels that Shift and an arrow move

GeRectangle<int> pixelAt(QPointF const& place)
{
    auto const x = static_cast<int>(std::floor(place.x()));
    auto const y = static_cast<int>(std::floor(place.y()));
    return {x, y, x + 1, y + 1};
}

GeRectangle<int> moved(GeRectangle<int> const& place, int dx, int dy)
{
    return {place.x0 + dx, place.y0 + dy, place.x1 + dx, place.y1 + dy};
}

/// Light on dark, so that it is seen on any picture.
void strokeTwice(QPainter& painter, QColor const& colour, auto const& draw)
{
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(QColor(0, 0, 0, 200), 3.5));
    draw();
    painter.setPen(QPen(colour, 1.5));
    draw();
}

} // namespace

PickMarks::PickMarks(Picks& shownPicks, PictureWidget& itsPicture)
    : QObject(&itsPicture), picks(shownPicks), picture(itsPicture)
{
}

void PickMarks::paint(QPainter& painter) const
{
    painter.setRenderHint(QPainter::Antialiasing);
    for (Pick const& pick : picks.getPicks()) {
        drawMark(painter, pick);
    }
}

void PickMarks::drawMark(QPainter& painter, Pick const& pick) const
{
    bool const isSelected = pick.number == picks.getSelected();
    QColor const colour = isSelected ? Theme::accent : QColor(Qt::white);
    QRectF const place = picture.toWidget(pick.place);
    strokeTwice(painter, colour, [&] {
        if (pick.isArea()) {
            painter.drawRect(place);
        } else {
            painter.drawEllipse(place.center(), ring, ring);
        }
    });
    QRectF const tag = findTag(pick);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(0, 0, 0, 200));
    painter.drawRoundedRect(tag, 3, 3);
    painter.setPen(colour);
    painter.drawText(tag, Qt::AlignCenter, QString::number(pick.number));
}

/// Where its number stands.
QRectF PickMarks::findTag(Pick const& pick) const
{
    QRectF const place = picture.toWidget(pick.place);
    QPointF const corner = pick.isArea() ? place.topRight() : place.center() + QPointF(ring, -ring);
    return {corner + QPointF(2, -tagSize), QSizeF(tagSize, tagSize)};
}

/// The last drawn lies on top.
int PickMarks::findMark(QPointF const& place) const
{
    auto const isOn = [&](Pick const& pick) {
        if (findTag(pick).contains(place)) {
            return true;
        }
        QRectF const rect = picture.toWidget(pick.place);
        if (!pick.isArea()) {
            QPointF const way = place - rect.center();
            return std::hypot(way.x(), way.y()) <= reach;
        }
        auto const grown = [&](double by) { return rect.adjusted(-by, -by, by, by); };
        return grown(edgeReach).contains(place) && !grown(-edgeReach).contains(place);
    };
    auto const& all = picks.getPicks();
    auto const found = std::find_if(all.rbegin(), all.rend(), isOn);
    return found == all.rend() ? 0 : found->number;
}

bool PickMarks::press(QPointF const& place)
{
    if (int const number = findMark(place); number != 0) {
        drag = Drag{place, number, picks.find(number)->place, false};
        picks.select(number);
        return true;
    }
    GeRectangle<int> const pixel = pixelAt(picture.toPicture(place));
    if (intersect(pixel, picture.getDataWindow()).isEmpty()) {
        picks.select(0);
        return true;
    }
    auto const former = picks.getPicks();
    picks.add(pixel);
    int const number = picks.getSelected();
    drag = Drag{place, number, {0, 0, 0, 0}, true};
    for (Pick const& pick : former) {
        drag->before = pick.number == number ? pick.place : drag->before;
    }
    return true;
}

bool PickMarks::move(QPointF const& place)
{
    if (!drag.has_value()) {
        picture.setCursor(findMark(place) != 0 ? Qt::SizeAllCursor : Qt::CrossCursor);
        return false;
    }
    if (picks.find(drag->number) == nullptr) {
        drag.reset(); // removed meanwhile
    } else if (drag->isNew) {
        grow(place);
    } else {
        shift(place);
    }
    return true;
}

/// From the pixel where the drag began to the one where it is.
void PickMarks::grow(QPointF const& place)
{
    drag->hasGrown = drag->hasGrown || (place - drag->begin).manhattanLength() >= dragBegins;
    if (!drag->hasGrown) {
        return;
    }
    GeRectangle<int> const from = pixelAt(picture.toPicture(drag->begin));
    GeRectangle<int> const to = pixelAt(picture.toPicture(place));
    GeRectangle<int> const both{std::min(from.x0, to.x0), std::min(from.y0, to.y0),
                                std::max(from.x1, to.x1), std::max(from.y1, to.y1)};
    picks.move(drag->number, intersect(both, picture.getDataWindow()));
}

void PickMarks::shift(QPointF const& place)
{
    QPointF const way = picture.toPicture(place) - picture.toPicture(drag->begin);
    picks.move(drag->number, keepWithin(moved(drag->before, static_cast<int>(std::round(way.x())),
                                              static_cast<int>(std::round(way.y())))));
}

bool PickMarks::release()
{
    return std::exchange(drag, {}).has_value();
}

/// Back to what was there before the drag.
void PickMarks::giveUp()
{
    Drag const ended = *std::exchange(drag, {});
    if (ended.before.isEmpty()) {
        picks.remove(ended.number);
    } else {
        picks.move(ended.number, ended.before);
    }
}

bool PickMarks::pressKey(QKeyEvent const& event)
{
    bool const isSize = event.modifiers().testFlag(Qt::ControlModifier);
    int const step = event.modifiers().testFlag(Qt::ShiftModifier) ? coarse : 1;
    bool const isSelected = picks.getSelected() != 0;
    switch (event.key()) {
    case Qt::Key_Escape:
        if (!drag.has_value()) {
            return false;
        }
        giveUp();
        return true;
    case Qt::Key_P: picks.add(picture.findPointedPixel()); return true;
    case Qt::Key_N: selectNext(); return true;
    case Qt::Key_Delete:
    case Qt::Key_Backspace:
        event.modifiers().testFlag(Qt::ShiftModifier) ? picks.clear()
                                                      : picks.remove(picks.getSelected());
        return true;
    case Qt::Key_Left: nudge(-step, 0, isSize); return isSelected;
    case Qt::Key_Right: nudge(step, 0, isSize); return isSelected;
    case Qt::Key_Up: nudge(0, -step, isSize); return isSelected;
    case Qt::Key_Down: nudge(0, step, isSize); return isSelected;
    default: return false;
    }
}

void PickMarks::selectNext()
{
    auto const& all = picks.getPicks();
    auto const next = std::find_if(all.begin(), all.end(), [this](Pick const& pick) {
        return pick.number > picks.getSelected();
    });
    picks.select(next != all.end() ? next->number : 0);
}

void PickMarks::nudge(int dx, int dy, bool isSize)
{
    Pick const* const pick = picks.find(picks.getSelected());
    if (pick == nullptr) {
        return;
    }
    GeRectangle<int> place = pick->place;
    if (isSize) {
        place.x1 = std::max(place.x0 + 1, place.x1 + dx);
        place.y1 = std::max(place.y0 + 1, place.y1 + dy);
        place = intersect(place, picture.getDataWindow());
    } else {
        place = keepWithin(moved(place, dx, dy));
    }
    if (!place.isEmpty()) {
        picks.move(pick->number, place);
    }
}

/// Moved back into the data window, if it is no larger.
GeRectangle<int> PickMarks::keepWithin(GeRectangle<int> place) const
{
    GeRectangle<int> const& window = picture.getDataWindow();
    auto const back = [](int begin, int end, int least, int greatest) {
        return std::max(least - begin, 0) + std::min(greatest - end, 0);
    };
    return moved(place, back(place.x0, place.x1, window.x0, window.x1),
                 back(place.y0, place.y1, window.y0, window.y1));
}

bool PickMarks::openMenu(QPointF const& place, QPoint const& onScreen)
{
    int const number = findMark(place);
    if (number == 0) {
        return false;
    }
    picks.select(number);
    auto* const menu = new QMenu(&picture);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    emit menuOpening(*menu, number);
    menu->addAction(tr("Remove pick %1").arg(number), this,
                    [this, number] { picks.remove(number); });
    menu->addAction(tr("Remove all picks"), this, [this] { picks.clear(); });
    menu->popup(onScreen);
    return true;
}

#include "editor/view/picture/moc_PickMarks.cpp"
