#include "editor/view/picture/PictureWidget.h"

#include "editor/view/window/Theme.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QWheelEvent>
#include <algorithm>
#include <cmath>
#include <cstring>
#include <utility>

namespace {

constexpr double leastZoom = 1.0 / 64;
constexpr double greatestZoom = 64.0;
constexpr double zoomPerNotch = 1.25;
constexpr double panPerKey = 60.0; // widget pixels
constexpr int panBegins = 3;
constexpr double margin = 12.0; // screen pixels around a fitted picture

} // namespace

PictureWidget::PictureWidget(Picks& shownPicks, QWidget* parent)
    : QWidget(parent), picks(shownPicks), marks(picks, *this), table(new PickTable(picks, this))
{
    setMouseTracking(true);
    setFocusPolicy(Qt::StrongFocus);
    setMinimumSize(240, 180);
    setAccessibleName(tr("Picture"));
    setAttribute(Qt::WA_OpaquePaintEvent);
    picks.addHandler(&picksChanged);
}

void PictureWidget::setWindows(GeRectangle<int> const& dataWindow,
                               GeRectangle<int> const& displayWindow)
{
    data = dataWindow;
    display = displayWindow;
    shown = {};
    fit();
}

void PictureWidget::showImage(ViewImage const& image)
{
    shown = QImage(image.width, image.height, QImage::Format_RGB32);
    for (int y = 0; y < image.height; ++y) {
        std::memcpy(shown.scanLine(y),
                    image.pixels.data() +
                        static_cast<std::size_t>(y) * static_cast<std::size_t>(image.width),
                    static_cast<std::size_t>(image.width) * sizeof(std::uint32_t));
    }
    shownRegion = image.region;
    shownReduction = image.reduction;
    update();
}

ViewRequest PictureWidget::getNeeded() const
{
    ViewRequest needed;
    needed.reduction = std::max(1, static_cast<int>(std::floor(1.0 / zoom)));
    QSize const size = getScreenSize();
    GeRectangle<int> const visible{static_cast<int>(std::floor(origin.x())),
                                   static_cast<int>(std::floor(origin.y())),
                                   static_cast<int>(std::ceil(origin.x() + size.width() / zoom)),
                                   static_cast<int>(std::ceil(origin.y() + size.height() / zoom))};
    needed.region = intersect(visible, data);
    if (needed.region.isEmpty()) {
        return needed;
    }
    // Blocks lie at the same places however the picture is panned.
    needed.region.x0 -= (needed.region.x0 - data.x0) % needed.reduction;
    needed.region.y0 -= (needed.region.y0 - data.y0) % needed.reduction;
    return needed;
}

void PictureWidget::fit()
{
    isFitted = true;
    GeRectangle<int> const& frame = display.isEmpty() ? data : display;
    if (frame.isEmpty()) {
        return;
    }
    QSize const size = getScreenSize();
    zoom = std::clamp(std::min((size.width() - 2 * margin) / frame.getWidth(),
                               (size.height() - 2 * margin) / frame.getHeight()),
                      leastZoom, greatestZoom);
    origin = {frame.x0 + frame.getWidth() / 2.0 - size.width() / zoom / 2,
              frame.y0 + frame.getHeight() / 2.0 - size.height() / zoom / 2};
    settle();
}

void PictureWidget::setZoom(double newZoom, QPointF const& about)
{
    isFitted = false;
    QPointF const screen = about * devicePixelRatioF();
    QPointF const place = origin + screen / zoom;
    zoom = std::clamp(newZoom, leastZoom, greatestZoom);
    origin = place - screen / zoom;
    settle();
}

/// Pixel for pixel, the picture's pixels lie on the screen's.
void PictureWidget::settle()
{
    if (zoom >= 1.0) {
        origin = {std::round(origin.x() * zoom) / zoom, std::round(origin.y() * zoom) / zoom};
    }
    update();
    emit viewChanged();
}

QSize PictureWidget::getScreenSize() const
{
    return (QSizeF(size()) * devicePixelRatioF()).toSize();
}

QPointF PictureWidget::toScreen(QPointF const& place) const
{
    return (place - origin) * zoom;
}

QPointF PictureWidget::toPicture(QPointF const& place) const
{
    return origin + place * devicePixelRatioF() / zoom;
}

QPointF PictureWidget::toWidget(QPointF const& place) const
{
    return toScreen(place) / devicePixelRatioF();
}

QRectF PictureWidget::toWidget(GeRectangle<int> const& region) const
{
    return {toWidget(QPointF(region.x0, region.y0)), toWidget(QPointF(region.x1, region.y1))};
}

QRectF PictureWidget::toScreen(GeRectangle<int> const& region) const
{
    return {toScreen(QPointF(region.x0, region.y0)), toScreen(QPointF(region.x1, region.y1))};
}

void PictureWidget::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.fillRect(rect(), Theme::surround);
    painter.scale(1.0 / devicePixelRatioF(), 1.0 / devicePixelRatioF());
    if (data.isEmpty()) {
        painter.setPen(Theme::dimText);
        painter.drawText(QRect(QPoint(), getScreenSize()), Qt::AlignCenter,
                         tr("Open a picture to begin"));
        return;
    }
    if (!shown.isNull()) {
        // The last block may reach beyond the region.
        GeRectangle<int> const covered{shownRegion.x0, shownRegion.y0,
                                       shownRegion.x0 + shown.width() * shownReduction,
                                       shownRegion.y0 + shown.height() * shownReduction};
        painter.setClipRect(toScreen(shownRegion));
        painter.setRenderHint(QPainter::SmoothPixmapTransform, zoom < 1.0);
        painter.drawImage(toScreen(covered), shown);
        painter.setClipping(false);
    }
    painter.setBrush(Qt::NoBrush);
    painter.setPen(Theme::frame);
    if (!(display == data)) {
        painter.drawRect(toScreen(display).adjusted(-1, -1, 0, 0));
        painter.setPen(QPen(Theme::frame, 1, Qt::DashLine));
    }
    painter.drawRect(toScreen(data).adjusted(-1, -1, 0, 0));
    painter.resetTransform();
    marks.paint(painter);
}

void PictureWidget::zoomIn()
{
    setZoom(zoom * zoomPerNotch, rect().center());
}

void PictureWidget::zoomOut()
{
    setZoom(zoom / zoomPerNotch, rect().center());
}

void PictureWidget::resizeEvent(QResizeEvent*)
{
    table->place();
    if (isFitted) {
        fit();
    } else {
        emit viewChanged();
    }
}

void PictureWidget::wheelEvent(QWheelEvent* event)
{
    double const notches = event->angleDelta().y() / double{QWheelEvent::DefaultDeltasPerStep};
    setZoom(zoom * std::pow(zoomPerNotch, notches), event->position());
    event->accept();
}

void PictureWidget::mousePressEvent(QMouseEvent* event)
{
    bool const isPan = event->button() == Qt::MiddleButton || event->button() == Qt::RightButton ||
                       event->modifiers().testFlag(Qt::AltModifier);
    if (data.isEmpty()) {
        return;
    }
    if (isPan) {
        panned = event->position();
        hasPanned = false;
    } else {
        marks.press(*event);
    }
}

void PictureWidget::mouseMoveEvent(QMouseEvent* event)
{
    if (!panned.has_value()) {
        marks.move(*event);
        hover(event->position());
        return;
    }
    QPointF const by = event->position() - *panned;
    if (hasPanned || by.manhattanLength() >= panBegins) {
        setCursor(Qt::ClosedHandCursor);
        hasPanned = true;
        panned = event->position();
        pan(by);
    }
}

void PictureWidget::mouseReleaseEvent(QMouseEvent* event)
{
    marks.release(*event);
    if (std::exchange(panned, {}).has_value()) {
        setCursor(Qt::CrossCursor);
        if (event->button() == Qt::RightButton && !hasPanned) {
            marks.openMenu(event->pos(), event->globalPosition().toPoint());
        }
    }
}

/// The right button pans, so a menu comes when it is let go.
void PictureWidget::contextMenuEvent(QContextMenuEvent* event)
{
    event->accept();
}

void PictureWidget::pan(QPointF const& by)
{
    isFitted = false;
    origin -= by * devicePixelRatioF() / zoom;
    settle();
}

void PictureWidget::hover(QPointF const& widgetPlace)
{
    QPointF const place = toPicture(widgetPlace);
    auto const x = static_cast<int>(std::floor(place.x()));
    auto const y = static_cast<int>(std::floor(place.y()));
    if (x >= data.x0 && x < data.x1 && y >= data.y0 && y < data.y1) {
        picks.hover(x, y);
    } else {
        picks.leave();
    }
}

GeRectangle<int> PictureWidget::findPointedPixel() const
{
    auto const& hovered = picks.getHovered();
    if (hovered.has_value()) {
        return hovered->place;
    }
    QPointF const middle = toPicture(QRectF(rect()).center());
    int const x = std::clamp(static_cast<int>(std::floor(middle.x())), data.x0, data.x1 - 1);
    int const y = std::clamp(static_cast<int>(std::floor(middle.y())), data.y0, data.y1 - 1);
    return {x, y, x + 1, y + 1};
}

void PictureWidget::keyPressEvent(QKeyEvent* event)
{
    bool const isTaken = !data.isEmpty() && (marks.pressKey(*event) || pressKey(*event));
    if (!isTaken) {
        QWidget::keyPressEvent(event);
    }
}

bool PictureWidget::pressKey(QKeyEvent const& event)
{
    switch (event.key()) {
    case Qt::Key_Left: pan({panPerKey, 0}); return true;
    case Qt::Key_Right: pan({-panPerKey, 0}); return true;
    case Qt::Key_Up: pan({0, panPerKey}); return true;
    case Qt::Key_Down: pan({0, -panPerKey}); return true;
    default: return false;
    }
}

void PictureWidget::leaveEvent(QEvent*)
{
    picks.leave();
}
