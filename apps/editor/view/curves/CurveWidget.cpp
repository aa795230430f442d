#include "editor/view/curves/CurveWidget.h"

#include "editor/view/curves/CurvePainter.h"
#include "editor/view/window/Theme.h"
#include "session/Failures.h"

#include <QAction>
#include <QContextMenuEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QNativeGestureEvent>
#include <QPainter>
#include <QWheelEvent>
#include <algorithm>
#include <cmath>
#include <exception>

namespace {

using CurveEditing::Move;
using CurveEditing::Side;

constexpr double graphZoomPerNotch = 1.2;
constexpr double wheelUnitsPerNotch = QWheelEvent::DefaultDeltasPerStep;
constexpr double fontShare = 0.88;
constexpr float nudgeStep = 0.005F;
constexpr float nudgeStops = 0.05F;
constexpr double leastFittedStop = -12.0; // what is darker is noise

float findNudgeFactor(Qt::KeyboardModifiers modifiers)
{
    return modifiers & Qt::ShiftModifier ? 10.0F : modifiers & Qt::ControlModifier ? 0.1F : 1.0F;
}

bool isVertical(int key)
{
    return key == Qt::Key_Up || key == Qt::Key_Down;
}

bool isForward(int key)
{
    return key == Qt::Key_Right || key == Qt::Key_Up;
}

bool isArrow(int key)
{
    return isVertical(key) || key == Qt::Key_Left || key == Qt::Key_Right;
}

/// Six digits at most; what is no number by name.
QString format(float value)
{
    return std::isnan(value)   ? QStringLiteral("nan")
           : std::isinf(value) ? QString(value > 0 ? "inf" : "-inf")
                               : QString::number(static_cast<double>(value), 'g', 4);
}

/// One number where the channels have the same.
QString formatChannels(CurveLines::Color const& values)
{
    return values[0] == values[1] && values[0] == values[2]
               ? format(values[0])
               : QString("R %1  G %2  B %3")
                     .arg(format(values[0]), format(values[1]), format(values[2]));
}

struct Extent {
    double low;
    double high;

    void add(double value)
    {
        if (std::isfinite(value)) {
            low = std::min(low, value);
            high = std::max(high, value);
        }
    }
};

Extent getPlainExtent(CurveAxis axis)
{
    return axis == CurveAxis::Stops ? Extent{-8.0, 1.0} : Extent{0.0, 1.0};
}

/// From x to y, by coordinates on the axis.
GraphRange enclose(Extent const& x, Extent const& y)
{
    return addMargin({x.low, y.low, x.high - x.low, y.high - y.low});
}

} // namespace

CurveWidget::CurveWidget(CurveModel& shownModel, QWidget* parent)
    : QWidget(parent), model(shownModel), shownAxis(model.getDisplay().axis)
{
    setFocusPolicy(Qt::StrongFocus);
    setMinimumSize(240, 160);
    setAccessibleName(tr("Curves"));
    setAttribute(Qt::WA_OpaquePaintEvent);
    setMouseTracking(true);
    QFont small = font();
    small.setPointSizeF(small.pointSizeF() * fontShare);
    setFont(small);
    model.editor.addHandler(&edited);
    model.histogram.addHandler(&counted);
    model.document.getNode().addHandler(&changed);
    model.picks.addHandler(&picked);
}

// ---- What is seen ----

GraphRange CurveWidget::getRange() const
{
    return readCurveView(model.document.getLink()).value_or(getPlainRange(shownAxis));
}

void CurveWidget::setRange(GraphRange const& range)
{
    writeCurveView(model.document.getLink(), range);
    update();
}

CurveScale CurveWidget::getScale() const
{
    return {shownAxis, getRange(), double(width()), double(height())};
}

QPointF CurveWidget::toWidget(GePoint2<float> const& place) const
{
    CurveScale const scale = getScale();
    return {scale.toPlaceX(place.x), scale.toPlaceY(place.y)};
}

/// Another axis has other coordinates: everything is fitted anew.
void CurveWidget::showDisplay()
{
    CurveAxis const axis = model.getDisplay().axis;
    if (axis != shownAxis) {
        shownAxis = axis;
        fitPicture();
    }
    update();
}

void CurveWidget::fitCurve()
{
    CurveScale const scale = getScale();
    Extent x = getPlainExtent(shownAxis);
    Extent y{0.0, 1.0};
    for (int channel = 0; channel < CurveEditor::nbChannels; ++channel) {
        CurvePoints const points = model.editor.getCurve(channel);
        for (std::size_t key = 0;
             model.editor.isEdited(channel) && key < CurveEditing::countKeys(points); ++key) {
            x.add(scale.toCoordinate(CurveEditing::getKey(points, key).x));
            y.add(CurveEditing::getKey(points, key).y);
        }
    }
    setRange(enclose(x, y));
}

void CurveWidget::fitPicture()
{
    auto const& extent = model.histogram.getExtent();
    if (!extent.has_value()) {
        fitCurve();
        return;
    }
    CurveScale const scale = getScale();
    Extent x = getPlainExtent(shownAxis);
    Extent y{0.0, 1.0};
    for (CurveLines::Color const& in : {extent->low, extent->high}) {
        CurveLines::Color const between = model.lines.transfer(in);
        CurveLines::Color const out = model.lines.finish(in);
        for (std::size_t channel = 0; channel < in.size(); ++channel) {
            x.add(scale.toCoordinate(in[channel]));
            x.add(scale.toCoordinate(between[channel]));
            y.add(between[channel]);
            y.add(out[channel]);
        }
    }
    if (shownAxis == CurveAxis::Stops) {
        x.low = std::max(x.low, leastFittedStop);
    }
    setRange(enclose(x, y));
}

void CurveWidget::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.fillRect(rect(), Theme::field);
    CurveScale const scale = getScale();
    CurvePainter graph(painter, model, scale, font());
    graph.drawGrid();
    graph.drawHistogram(devicePixelRatioF());
    graph.drawLabels();
    painter.setRenderHint(QPainter::Antialiasing);
    graph.drawTransfers();
    graph.drawCurves(hoveredCurve);
    graph.drawBoth();
    graph.drawMarks();
    graph.drawKeys(hovered);
    if (band.has_value()) {
        painter.setPen(QPen(Theme::accent, 1.0, Qt::DotLine));
        painter.setBrush(Qt::NoBrush);
        painter.drawRect(band->normalized());
    }
    if (hasFocus()) {
        painter.setRenderHint(QPainter::Antialiasing, false);
        painter.setPen(Theme::accent);
        painter.setBrush(Qt::NoBrush);
        painter.drawRect(rect().adjusted(0, 0, -1, -1));
    }
}

// ---- Mouse ----

void CurveWidget::attempt(std::function<void()> const& edit)
{
    try {
        edit();
    } catch (std::exception const&) {
        emit failed(QString::fromStdString(describeCurrentFailure().text));
    }
}

void CurveWidget::mousePressEvent(QMouseEvent* event)
{
    pressed = event->position();
    if (drag != Drag::None) {
        return;
    }
    if (event->button() == Qt::MiddleButton) {
        drag = Drag::Pan;
        setCursor(Qt::ClosedHandCursor);
    } else if (event->button() == Qt::LeftButton) {
        attempt([&] { pressCurve(*event); });
    }
}

void CurveWidget::pressCurve(QMouseEvent const& event)
{
    CurveScale const scale = getScale();
    CurveHits const hits(model, scale);
    gripped = hits.findGrip(pressed);
    wasThere = gripped.has_value();
    bool const hasControl = event.modifiers() & Qt::ControlModifier;
    bool const hasAlt = event.modifiers() & Qt::AltModifier;
    if (gripped.has_value() && gripped->handle.has_value()) {
        grippedAt = pressed;
        startDrag(Drag::Handle, "Move handle");
    } else if (gripped.has_value() && hasControl) {
        model.editor.toggle(gripped->key);
    } else if (gripped.has_value()) {
        if (hasAlt || !model.editor.isSelected(gripped->key)) {
            model.editor.select(gripped->key);
        }
        grippedAt = hits.placeKey(gripped->key);
        startDrag(hasAlt ? Drag::Pull : Drag::Keys, hasAlt ? "Pull handles"
                                                    : model.editor.countSelected() > 1
                                                        ? "Move keys"
                                                        : "Move key");
    } else if (auto const curve = hasControl || hasAlt ? std::nullopt : hits.findCurve(pressed)) {
        model.editor.beginDragOfNew(*curve, static_cast<float>(scale.toX(pressed.x())));
        gripped = CurveGrip{*model.editor.getOnlyKey()};
        grippedAt = hits.placeKey(gripped->key);
        drag = Drag::Keys;
    } else if (hasAlt) {
        drag = Drag::Pan;
        setCursor(Qt::ClosedHandCursor);
    } else {
        drag = Drag::Band;
        band = QRectF(pressed, pressed);
        if (!hasControl) {
            model.editor.selectNone();
        }
    }
}

void CurveWidget::startDrag(Drag kind, std::string const& label)
{
    model.editor.beginDrag(label);
    drag = kind;
}

void CurveWidget::mouseMoveEvent(QMouseEvent* event)
{
    if (drag == Drag::None) {
        hover(event->position());
    } else {
        attempt([&] { continueDrag(event->position(), event->modifiers()); });
    }
}

void CurveWidget::continueDrag(QPointF const& place, Qt::KeyboardModifiers modifiers)
{
    if (drag == Drag::Pan) {
        pan(place - pressed);
        pressed = place;
    } else if (drag == Drag::Band) {
        band->setBottomRight(place);
        selectWithin(band->normalized());
    } else {
        dragGrip(place, modifiers);
        cursorAt = place;
        emit pointed(describe(place));
    }
}

/// The grip goes where the cursor goes, from where it was.
void CurveWidget::dragGrip(QPointF const& place, Qt::KeyboardModifiers modifiers)
{
    CurveScale const scale = getScale();
    QPointF way = place - pressed;
    if (modifiers & Qt::ShiftModifier) {
        (std::abs(way.x()) >= std::abs(way.y()) ? way.ry() : way.rx()) = 0.0;
    }
    double const fromX = scale.toX(grippedAt.x());
    double const toX = scale.toX(grippedAt.x() + way.x());
    auto const dx = static_cast<float>(toX - fromX);
    auto const dy = static_cast<float>(-way.y() / height() * scale.getRange().height);
    if (drag == Drag::Handle) {
        bool const isAlone = modifiers & Qt::AltModifier;
        model.editor.dragHandle(*gripped->handle, dx, dy,
                                isAlone ? CurveEditor::Other::Stays : CurveEditor::Other::Follows);
    } else if (drag == Drag::Pull) {
        model.editor.pullHandles(dx, dy);
    } else if (shownAxis == CurveAxis::Stops && fromX > 0.0 && toX > 0.0) {
        model.editor.dragSelected({0.0F, dy, static_cast<float>(toX / fromX)});
    } else {
        model.editor.dragSelected({dx, dy});
    }
}

void CurveWidget::mouseReleaseEvent(QMouseEvent* event)
{
    if (drag == Drag::Keys || drag == Drag::Handle || drag == Drag::Pull) {
        model.editor.endDrag();
    }
    drag = Drag::None;
    gripped.reset();
    band.reset();
    hover(event->position());
    update();
}

/// The first click of the two may have added the key: that one stays as it is.
void CurveWidget::mouseDoubleClickEvent(QMouseEvent* event)
{
    CurveScale const scale = getScale();
    auto const grip = CurveHits(model, scale).findGrip(event->position());
    if (event->button() == Qt::LeftButton && wasThere && grip.has_value() &&
        !grip->handle.has_value()) {
        attempt([&] {
            model.editor.select(grip->key);
            model.editor.resetHandles();
        });
    } else {
        mousePressEvent(event);
    }
}

void CurveWidget::contextMenuEvent(QContextMenuEvent* event)
{
    if (drag == Drag::None) {
        emit menuAsked(event->pos(), event->globalPos());
    }
}

void CurveWidget::selectWithin(QRectF const& within)
{
    CurveScale const scale = getScale();
    model.editor.selectWithin([&](GePoint2<float> const& key) {
        return within.contains(QPointF(scale.toPlaceX(key.x), scale.toPlaceY(key.y)));
    });
}

void CurveWidget::giveUp()
{
    if (drag == Drag::Keys || drag == Drag::Handle || drag == Drag::Pull) {
        model.editor.abandonDrag();
    } else if (drag == Drag::None || drag == Drag::Band) {
        model.editor.selectNone();
    }
    drag = Drag::None;
    gripped.reset();
    band.reset();
    tellPointed();
    update();
}

// ---- Hovering ----

void CurveWidget::hover(QPointF const& place)
{
    CurveScale const scale = getScale();
    CurveHits const hits(model, scale);
    cursorAt = place;
    hovered = hits.findGrip(place);
    hoveredCurve = hovered.has_value() ? std::nullopt : hits.findCurve(place);
    setCursor(hovered.has_value()        ? Qt::SizeAllCursor
              : hoveredCurve.has_value() ? Qt::PointingHandCursor
                                         : Qt::ArrowCursor);
    emit pointed(describe(place));
    update();
}

/// What lies below the cursor may have moved.
void CurveWidget::tellPointed()
{
    if (drag == Drag::None && cursorAt.has_value()) {
        hover(*cursorAt);
    }
}

void CurveWidget::unhover()
{
    cursorAt.reset();
    hovered.reset();
    hoveredCurve.reset();
    emit pointed({});
    update();
}

void CurveWidget::leaveEvent(QEvent*)
{
    unhover();
}

QString CurveWidget::describe(QPointF const& place) const
{
    CurveScale const scale = getScale();
    auto const& key = drag != Drag::None && gripped.has_value() ? gripped : hovered;
    if (key.has_value()) {
        CurvePoints const points = model.editor.getCurve(key->key.channel);
        GePoint2<float> const there =
            key->handle.has_value() ? CurveEditing::getHandle(points, key->key.key, *key->handle)
                                    : CurveEditing::getKey(points, key->key.key);
        return (key->handle.has_value()
                    ? tr("handle")
                    : tr("key %1 of %2").arg(key->key.key + 1).arg(points.size() / 3)) +
               QString("   x %1   y %2").arg(format(there.x), format(there.y));
    }
    auto const x = static_cast<float>(scale.toX(place.x()));
    CurveLines::Color const grey{x, x, x};
    QStringList others;
    if (model.getDisplay().hasTransfer) {
        others << tr("transfer %1").arg(formatChannels(model.lines.transfer(grey)));
    }
    if (model.getDisplay().hasBoth) {
        others << tr("both %1").arg(formatChannels(model.lines.finish(grey)));
    }
    return QString::fromUtf8("%1 → %2\n%3")
        .arg(format(x), formatChannels(model.lines.curve(grey)), others.join("   "))
        .trimmed();
}

// ---- Zoom and pan ----

void CurveWidget::pan(QPointF const& by)
{
    CurveScale const scale = getScale();
    GraphRange range = scale.getRange();
    range.left -= by.x() / (width() - scale.getStart()) * range.width;
    range.bottom += by.y() / height() * range.height;
    setRange(range);
}

void CurveWidget::zoom(QPointF const& about, double factorX, double factorY)
{
    CurveScale const scale = getScale();
    double const x = std::max(about.x(), scale.getStart());
    setRange(zoomRange(shownAxis, scale.getRange(), scale.toCoordinateOfPlace(x),
                       scale.toY(about.y()), factorX, factorY));
    tellPointed();
}

void CurveWidget::wheelEvent(QWheelEvent* event)
{
    if (drag == Drag::None || drag == Drag::Pan) {
        zoomByWheel(*event);
    }
    event->accept();
}

/// Wheels turn in notches, trackpads in small steps and sideways.
void CurveWidget::zoomByWheel(QWheelEvent const& event)
{
    QPointF const turned = QPointF(event.angleDelta()) / wheelUnitsPerNotch;
    if (event.modifiers() & Qt::AltModifier) { // by which some systems turn sideways
        CurveDisplay display = model.getDisplay();
        display.histogramZoom *= std::pow(graphZoomPerNotch, turned.x() + turned.y());
        model.setDisplay(display);
        return;
    }
    if (std::abs(turned.x()) > std::abs(turned.y())) {
        constexpr double pixelsPerNotch = 60.0;
        pan({turned.x() * pixelsPerNotch, 0.0});
        return;
    }
    double const factor = std::pow(graphZoomPerNotch, turned.y());
    bool const isOneAxis = event.modifiers() & (Qt::ShiftModifier | Qt::ControlModifier);
    bool const isX = event.modifiers() & Qt::ShiftModifier;
    zoom(event.position(), isOneAxis && !isX ? 1.0 : factor, isOneAxis && isX ? 1.0 : factor);
}

// ---- Keys ----

QAction* CurveWidget::findAction(QKeyEvent const& event) const
{
    QKeySequence const pressedKeys(event.keyCombination());
    for (QAction* const action : actions()) {
        if (action->isEnabled() && action->shortcuts().contains(pressedKeys)) {
            return action;
        }
    }
    return nullptr;
}

bool CurveWidget::event(QEvent* event)
{
    if (event->type() == QEvent::ShortcutOverride) {
        auto const& key = static_cast<QKeyEvent const&>(*event);
        if (findAction(key) != nullptr || isArrow(key.key()) || key.key() == Qt::Key_Escape) {
            event->accept();
            return true;
        }
    }
    if (event->type() == QEvent::NativeGesture) {
        auto const& gesture = static_cast<QNativeGestureEvent const&>(*event);
        if (gesture.gestureType() == Qt::ZoomNativeGesture) {
            zoom(gesture.position(), 1.0 + gesture.value(), 1.0 + gesture.value());
            return true;
        }
    }
    return QWidget::event(event);
}

void CurveWidget::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Escape) {
        event->setAccepted(drag != Drag::None); // otherwise it may mean something else, too
        giveUp();
    } else if (drag != Drag::None) {
        event->accept(); // the drag ends first
    } else if (isArrow(event->key()) && event->modifiers() & Qt::AltModifier) {
        nudgeHandle(event->key(),
                    event->modifiers() & Qt::ShiftModifier ? Side::Incoming : Side::Outgoing);
    } else if (isArrow(event->key())) {
        attempt([&] { nudge(event->key(), event->modifiers()); });
    } else if (QAction* const action = findAction(*event)) {
        action->trigger();
    } else {
        QWidget::keyPressEvent(event);
    }
}

void CurveWidget::nudge(int key, Qt::KeyboardModifiers modifiers)
{
    float const factor = findNudgeFactor(modifiers);
    float const sign = isForward(key) ? factor : -factor;
    Move move;
    if (isVertical(key)) {
        move.dy = sign * nudgeStep;
    } else if (shownAxis == CurveAxis::Stops) {
        move.factor = std::exp2(sign * nudgeStops);
    } else {
        move.dx = sign * nudgeStep;
    }
    model.editor.moveSelected("Nudge", move);
}

/// The selected keys' handles on one side; the others follow as in a drag.
void CurveWidget::nudgeHandle(int key, Side side)
{
    if (!model.editor.hasSelection()) {
        return;
    }
    float const sign = isForward(key) ? 1.0F : -1.0F;
    float dx = isVertical(key) ? 0.0F : sign * nudgeStep;
    if (shownAxis == CurveAxis::Stops) {
        int const lead = model.editor.getLead();
        float const x =
            CurveEditing::getCountingHandle(model.editor.getCurve(lead),
                                            model.editor.getSelection(lead).front(), side)
                .x;
        dx *= std::max(x, nudgeStep) * nudgeStops / nudgeStep;
    }
    model.editor.beginDrag("Move handle");
    attempt([&] {
        model.editor.dragHandle(side, dx, isVertical(key) ? sign * nudgeStep : 0.0F,
                                CurveEditor::Other::Follows);
    });
    model.editor.endDrag();
}

/// Tab goes from key to key and then on to the next widget.
bool CurveWidget::focusNextPrevChild(bool isNext)
{
    bool const isHere = window()->focusWidget() == this;
    return (isHere && (isNext ? model.editor.selectNext() : model.editor.selectPrevious())) ||
           QWidget::focusNextPrevChild(isNext);
}

#include "editor/view/curves/moc_CurveWidget.cpp"
