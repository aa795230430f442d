#include "editor/view/picture/PictureWidget.h"

#include "editor/view/window/Theme.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QNativeGestureEvent>
#include <QPainter>
#include <QPainterPath>
#include <QWheelEvent>
#include <algorithm>
#include <cmath>
#include <utility>

namespace {

constexpr double zoomPerNotch = 1.25;
constexpr double trackpadPixelsPerNotch = 40.0;
constexpr double panPerKey = 60.0; // widget pixels
constexpr int panBegins = 3;
constexpr int gap = 2; // widget pixels between two sides
constexpr int labelDistance = 8;

/// In a corner of a pane.
void drawLabel(QPainter& painter, QRect const& pane, Qt::Corner corner, QString const& text)
{
    QSize const size = painter.fontMetrics().size(Qt::TextSingleLine, text) +
                       QSize(2 * labelDistance, labelDistance);
    QRect box(pane.topLeft() + QPoint(labelDistance, labelDistance), size);
    if (corner == Qt::TopRightCorner || corner == Qt::BottomRightCorner) {
        box.moveRight(pane.right() - labelDistance);
    }
    if (corner == Qt::BottomLeftCorner || corner == Qt::BottomRightCorner) {
        box.moveBottom(pane.bottom() - labelDistance);
    }
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(24, 24, 24, 225));
    painter.drawRoundedRect(box, 3, 3);
    painter.setPen(Theme::text);
    painter.drawText(box, Qt::AlignCenter, text);
}

} // namespace

PictureWidget::PictureWidget(Picks& shownPicks, QWidget* parent)
    : QWidget(parent), picks(shownPicks), marks(picks, *this), wipe(*this),
      table(new PickTable(picks, this))
{
    setMouseTracking(true);
    setFocusPolicy(Qt::StrongFocus);
    setMinimumSize(240, 180);
    setAccessibleName(tr("Picture"));
    setAttribute(Qt::WA_OpaquePaintEvent);
    setCursor(Qt::CrossCursor);
    picks.addHandler(&picksChanged);
}

void PictureWidget::setWindows(GeRectangle<int> const& dataWindow,
                               GeRectangle<int> const& displayWindow)
{
    GeRectangle<int> const data = getDataWindow();
    GeRectangle<int> const display = geometry.getDisplayWindow();
    geometry.setWindows(dataWindow, displayWindow);
    if (!(data == getDataWindow() && display == geometry.getDisplayWindow())) {
        images = {};
        geometry.fit();
    }
    gapReason.clear();
    settle();
}

void PictureWidget::changeWindows(GeRectangle<int> const& dataWindow,
                                  GeRectangle<int> const& displayWindow)
{
    geometry.setWindows(dataWindow, displayWindow);
    updateScreen(); // fitted again if it was
    gapReason.clear();
    settle();
}

void PictureWidget::showGap(QString const& reason)
{
    gapReason = reason;
    images = {};
    update();
}

void PictureWidget::showImage(Side side, std::shared_ptr<ViewImage const> const& image)
{
    images[side] = image;
    update();
}

ViewRequest PictureWidget::getNeeded() const
{
    ViewRequest needed;
    needed.grid = geometry.getGrid();
    needed.needsSource = isSourceHeld || compare != Compare::Off;
    needed.needsResult = !isSourceHeld;
    return needed;
}

void PictureWidget::setCompare(Compare newCompare)
{
    compare = newCompare;
    updateScreen();
    wipe.setShown(compare == Compare::Wipe);
    settle();
}

void PictureWidget::holdSource(bool isToBeHeld)
{
    if (isSourceHeld != isToBeHeld) {
        isSourceHeld = isToBeHeld;
        settle();
    }
}

QRect PictureWidget::getPane() const
{
    int const paneWidth = compare == Compare::SideBySide ? (width() - gap) / 2 : width();
    return {0, 0, paneWidth, height()};
}

QRect PictureWidget::getSecondPane() const
{
    return getPane().translated(width() - getPane().width(), 0);
}

void PictureWidget::updateScreen()
{
    QSize const size = (QSizeF(getPane().size()) * devicePixelRatioF()).toSize();
    geometry.setScreen(size.width(), size.height());
}

void PictureWidget::settle()
{
    smoothZoom = geometry.getZoom();
    update();
    emit viewChanged();
}

void PictureWidget::fit()
{
    geometry.fit();
    settle();
}

void PictureWidget::setZoom(double newZoom, QPointF const& about)
{
    double const ratio = devicePixelRatioF();
    geometry.setZoom(newZoom, {about.x() * ratio, about.y() * ratio});
    settle();
}

void PictureWidget::stepZoom(int steps, QPointF const& about)
{
    double const ratio = devicePixelRatioF();
    geometry.stepZoom(steps, {about.x() * ratio, about.y() * ratio});
    settle();
}

void PictureWidget::pan(QPointF const& by)
{
    geometry.pan(by.x() * devicePixelRatioF(), by.y() * devicePixelRatioF());
    settle();
}

QPointF PictureWidget::toPane(QPointF const& place) const
{
    bool const isSecond =
        compare == Compare::SideBySide && place.x() >= getSecondPane().left() - gap;
    return isSecond ? place - QPointF(getSecondPane().topLeft()) : place;
}

QPointF PictureWidget::toPicture(QPointF const& place) const
{
    double const ratio = devicePixelRatioF();
    auto const found = geometry.toPicture({place.x() * ratio, place.y() * ratio});
    return {found.x, found.y};
}

QPointF PictureWidget::toWidget(QPointF const& place) const
{
    auto const screen = geometry.toScreen({place.x(), place.y()});
    return QPointF(screen.x, screen.y) / devicePixelRatioF();
}

QRectF PictureWidget::toWidget(GeRectangle<int> const& region) const
{
    return {toWidget(QPointF(region.x0, region.y0)), toWidget(QPointF(region.x1, region.y1))};
}

QRectF PictureWidget::toScreen(GeRectangle<int> const& region) const
{
    auto const from = geometry.toScreen({double(region.x0), double(region.y0)});
    auto const to = geometry.toScreen({double(region.x1), double(region.y1)});
    return {QPointF(from.x, from.y), QPointF(to.x, to.y)};
}

QRectF PictureWidget::toScreen(PixelGrid const& grid) const
{
    auto const from = geometry.toScreen({grid.x0, grid.y0});
    double const scale = grid.step * geometry.getZoom();
    return {from.x, from.y, grid.width * scale, grid.height * scale};
}

void PictureWidget::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    if (getDataWindow().isEmpty() || !gapReason.isEmpty()) {
        painter.fillRect(rect(), Theme::surround);
        painter.setPen(gapReason.isEmpty() ? Theme::dimText : Theme::text);
        painter.drawText(rect().adjusted(12, 12, -12, -12), Qt::AlignCenter | Qt::TextWordWrap,
                         gapReason.isEmpty() ? tr("Open a picture to begin") : gapReason);
        return;
    }
    paintPanes(painter);
    if (compare == Compare::Wipe && !isSourceHeld) {
        wipe.paint(painter);
    }
    paintLabels(painter);
}

void PictureWidget::paintPanes(QPainter& painter) const
{
    Side const first = isSourceHeld || compare == Compare::SideBySide ? ViewRenderer::Source
                                                                      : ViewRenderer::Result;
    paintSide(painter, first);
    if (compare == Compare::SideBySide) {
        painter.translate(getSecondPane().topLeft());
        paintSide(painter, isSourceHeld ? ViewRenderer::Source : ViewRenderer::Result);
        painter.resetTransform();
        painter.fillRect(getPane().width(), 0, getSecondPane().left() - getPane().width(), height(),
                         Theme::panel);
    } else if (compare == Compare::Wipe && !isSourceHeld) {
        QPainterPath source;
        source.addPolygon(wipe.getSourceSide());
        painter.setClipPath(source);
        paintSide(painter, ViewRenderer::Source);
        painter.setClipping(false);
    }
}

/// One pane: what is around the picture, the picture, its windows and marks.
void PictureWidget::paintSide(QPainter& painter, Side side) const
{
    painter.save();
    painter.setClipRect(getPane(), Qt::IntersectClip);
    painter.scale(1.0 / devicePixelRatioF(), 1.0 / devicePixelRatioF());
    QRect const pane(QPoint(), (QSizeF(getPane().size()) * devicePixelRatioF()).toSize());
    QRegion around(pane);
    if (images[side] != nullptr) {
        around -= toScreen(images[side]->grid).toAlignedRect();
    }
    // What a render gives beside the data window is 0.
    QRegion const empty = around & toScreen(geometry.getDisplayWindow()).toAlignedRect();
    for (QRect const& part : around - empty) {
        painter.fillRect(part, Theme::surround);
    }
    for (QRect const& part : empty) {
        painter.fillRect(part, Qt::black);
    }
    if (images[side] != nullptr) {
        paintImage(painter, *images[side]);
    }
    paintWindows(painter);
    painter.restore();
    painter.save();
    marks.paint(painter);
    painter.restore();
}

/// Pixel on pixel, unless another image is still to come for this zoom.
void PictureWidget::paintImage(QPainter& painter, ViewImage const& image) const
{
    PixelGrid const& grid = image.grid;
    QImage const wrapped(reinterpret_cast<uchar const*>(image.pixels.data()), grid.width,
                         grid.height, grid.width * 4, QImage::Format_RGB32);
    QRectF const place = toScreen(grid);
    if (std::fabs(place.width() - grid.width) < 0.5) {
        painter.drawImage(place.topLeft().toPoint(), wrapped);
    } else {
        painter.drawImage(place, wrapped);
    }
}

void PictureWidget::paintWindows(QPainter& painter) const
{
    painter.setRenderHint(QPainter::Antialiasing, false);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(Theme::frame);
    auto const outline = [this](GeRectangle<int> const& window) {
        return toScreen(window).toAlignedRect().adjusted(-1, -1, 0, 0);
    };
    if (!(geometry.getDisplayWindow() == getDataWindow())) {
        painter.drawRect(outline(geometry.getDisplayWindow()));
        painter.setPen(QPen(Theme::frame, 1, Qt::DashLine));
    }
    painter.drawRect(outline(getDataWindow()));
}

/// Says which side is which where it is not the result alone.
void PictureWidget::paintLabels(QPainter& painter) const
{
    painter.setRenderHint(QPainter::Antialiasing);
    QString const source = tr("Source");
    QString const result = tr("Result");
    if (isSourceHeld) {
        drawLabel(painter, rect(), Qt::TopLeftCorner, source);
    } else if (compare == Compare::SideBySide) {
        drawLabel(painter, getPane(), Qt::TopLeftCorner, source);
        drawLabel(painter, getSecondPane(), Qt::TopLeftCorner, result);
    } else if (compare == Compare::Wipe) {
        for (auto const& [corner, isSource] : wipe.findLabels()) {
            drawLabel(painter, rect(), corner, isSource ? source : result);
        }
    }
}

void PictureWidget::resizeEvent(QResizeEvent*)
{
    table->place();
    updateScreen();
    settle();
}

/// A wheel goes by notches; a trackpad's way is summed up until the zoom's next step.
void PictureWidget::wheelEvent(QWheelEvent* event)
{
    event->accept();
    QPointF const about = toPane(event->position());
    int const units = event->angleDelta().y();
    if (event->pixelDelta().isNull() && units % QWheelEvent::DefaultDeltasPerStep == 0) {
        stepZoom(units / QWheelEvent::DefaultDeltasPerStep, about);
        return;
    }
    double const notches = event->pixelDelta().isNull()
                               ? units / double{QWheelEvent::DefaultDeltasPerStep}
                               : event->pixelDelta().y() / trackpadPixelsPerNotch;
    zoomSmoothly(std::pow(zoomPerNotch, notches), about);
}

void PictureWidget::zoomSmoothly(double factor, QPointF const& about)
{
    double const wanted =
        std::clamp(smoothZoom * factor, ViewGeometry::least, ViewGeometry::greatest);
    setZoom(wanted, about);
    smoothZoom = wanted;
}

void PictureWidget::mousePressEvent(QMouseEvent* event)
{
    bool const isPan = event->button() == Qt::MiddleButton || event->button() == Qt::RightButton ||
                       event->modifiers().testFlag(Qt::AltModifier);
    if (getDataWindow().isEmpty()) {
        return;
    }
    if (isPan) {
        panned = event->position();
        hasPanned = false;
    } else if (event->button() == Qt::LeftButton) {
        QPointF const place = toPane(event->position());
        static_cast<void>(wipe.press(place) || marks.press(place));
    }
}

void PictureWidget::mouseMoveEvent(QMouseEvent* event)
{
    if (!panned.has_value()) {
        QPointF const place = toPane(event->position());
        static_cast<void>(wipe.move(place) || marks.move(place));
        hover(place);
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
    if (event->button() == Qt::LeftButton) {
        static_cast<void>(wipe.release() || marks.release());
    }
    if (std::exchange(panned, {}).has_value()) {
        setCursor(Qt::CrossCursor);
        if (event->button() == Qt::RightButton && !hasPanned) {
            marks.openMenu(toPane(event->position()), event->globalPosition().toPoint());
        }
    }
}

/// The second click of two is a click.
void PictureWidget::mouseDoubleClickEvent(QMouseEvent* event)
{
    mousePressEvent(event);
}

/// The right button pans, so a menu comes when it is let go.
void PictureWidget::contextMenuEvent(QContextMenuEvent* event)
{
    event->accept();
}

void PictureWidget::hover(QPointF const& widgetPlace)
{
    QPointF const place = toPicture(widgetPlace);
    GeRectangle<int> const& data = getDataWindow();
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
    GeRectangle<int> const& data = getDataWindow();
    QPointF const middle = toPicture(QRectF(getPane()).center());
    int const x = std::clamp(static_cast<int>(std::floor(middle.x())), data.x0, data.x1 - 1);
    int const y = std::clamp(static_cast<int>(std::floor(middle.y())), data.y0, data.y1 - 1);
    return {x, y, x + 1, y + 1};
}

/// Arrows that are this widget's own are no shortcuts; two fingers zoom.
bool PictureWidget::event(QEvent* event)
{
    if (event->type() == QEvent::ShortcutOverride) {
        int const key = static_cast<QKeyEvent*>(event)->key();
        bool const isSideways = key == Qt::Key_Left || key == Qt::Key_Right;
        if (isSideways && (picks.getSelected() != 0 || !isStepping)) {
            event->accept();
            return true;
        }
    }
    if (event->type() == QEvent::NativeGesture) {
        auto const& gesture = static_cast<QNativeGestureEvent const&>(*event);
        if (gesture.gestureType() == Qt::ZoomNativeGesture) {
            zoomSmoothly(1.0 + gesture.value(), toPane(gesture.position()));
            return true;
        }
    }
    return QWidget::event(event);
}

void PictureWidget::keyPressEvent(QKeyEvent* event)
{
    bool const isTaken = !getDataWindow().isEmpty() &&
                         (wipe.pressKey(*event) || marks.pressKey(*event) || pressKey(*event));
    if (!isTaken) {
        QWidget::keyPressEvent(event);
    }
}

bool PictureWidget::pressKey(QKeyEvent const& event)
{
    if (event.modifiers() != Qt::NoModifier) {
        return false;
    }
    switch (event.key()) {
    case Qt::Key_S: holdSource(true); return true;
    case Qt::Key_Left: pan({panPerKey, 0}); return true;
    case Qt::Key_Right: pan({-panPerKey, 0}); return true;
    case Qt::Key_Up: pan({0, panPerKey}); return true;
    case Qt::Key_Down: pan({0, -panPerKey}); return true;
    default: return false;
    }
}

void PictureWidget::keyReleaseEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_S && !event->isAutoRepeat()) {
        holdSource(false);
    } else {
        QWidget::keyReleaseEvent(event);
    }
}

void PictureWidget::focusOutEvent(QFocusEvent* event)
{
    holdSource(false); // the key may be let go of elsewhere
    QWidget::focusOutEvent(event);
}

void PictureWidget::leaveEvent(QEvent*)
{
    picks.leave();
}

#include "editor/view/picture/moc_PictureWidget.cpp"
