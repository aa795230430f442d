#include "editor/view/curves/CurveWidget.h"

#include "editor/view/window/Theme.h"
#include "plots/PlotScale.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QWheelEvent>
#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace {

using CurveEditing::Handles;
using CurveEditing::Side;

constexpr double gripReach = 8.0; // pixels
constexpr double curveReach = 6.0;
constexpr double keyRadius = 4.0;
constexpr double handleRadius = 3.0;
constexpr double curveZoomPerNotch = 1.2;
constexpr double leastRange = 1e-4;
constexpr double greatestRange = 1e5;
constexpr float nudgeStep = 0.005F;
constexpr double firstStop = -8.0;
constexpr double lastStop = 6.0;
constexpr double farStop = 100.0; // beyond every view, and a float still
constexpr int nbTransferParts = 32;

/// Distinct without colour.
constexpr Qt::PenStyle styles[] = {Qt::SolidLine, Qt::DashLine, Qt::DotLine};

double measure(QPointF const& a, QPointF const& b)
{
    return std::hypot(a.x() - b.x(), a.y() - b.y());
}

float findNudgeFactor(Qt::KeyboardModifiers modifiers)
{
    return modifiers & Qt::ShiftModifier ? 10.0F : modifiers & Qt::ControlModifier ? 0.1F : 1.0F;
}

} // namespace

CurveWidget::CurveWidget(Document& editedDocument, QWidget* parent)
    : QWidget(parent), document(editedDocument)
{
    setFocusPolicy(Qt::StrongFocus);
    setMinimumSize(280, 240);
    setAccessibleName(tr("Curves"));
    setAttribute(Qt::WA_OpaquePaintEvent);
    document.getNode().addHandler(&changed);
}

void CurveWidget::setChannel(int newChannel)
{
    channel = newChannel;
    select({});
    update();
}

void CurveWidget::setAxis(Axis newAxis)
{
    axis = newAxis;
    fitCurve();
}

std::optional<std::size_t> CurveWidget::getSelectedKey() const
{
    return selection.size() == 1 ? std::optional(selection.front()) : std::nullopt;
}

bool CurveWidget::isSelected(std::size_t key) const
{
    return std::find(selection.begin(), selection.end(), key) != selection.end();
}

std::optional<GePoint2<float>> CurveWidget::getSelectedPlace() const
{
    auto const key = getSelectedKey();
    return key.has_value() ? std::optional(CurveEditing::getKey(getPoints(), *key)) : std::nullopt;
}

void CurveWidget::placeSelectedKey(GePoint2<float> const& place)
{
    auto const key = getSelectedKey();
    if (key.has_value()) {
        apply("Place key", CurveEditing::placeKey(getPoints(), *key, place));
    }
}

void CurveWidget::setSelectedHandles(Handles handles)
{
    if (!selection.empty()) {
        apply("Change handles", CurveEditing::setHandles(getPoints(), selection, handles));
    }
}

void CurveWidget::removeSelectedKeys()
{
    if (!selection.empty()) {
        CurveEditing::Selection const keys = selection;
        select({});
        apply(keys.size() == 1 ? "Remove key" : "Remove keys",
              CurveEditing::removeKeys(getPoints(), keys));
    }
}

void CurveWidget::apply(std::string const& label, CurvePoints const& points)
{
    std::array<CurvePoints, 3> curves;
    for (int curve = 0; curve < ControllerLink::nbChannels; ++curve) {
        bool const isEdited = channel == allChannels || curve == channel;
        curves[static_cast<std::size_t>(curve)] = isEdited ? points : document.getCurve(curve);
    }
    try {
        document.setCurves(label, curves);
    } catch (ValueError const& error) {
        emit failed(QString::fromStdString(error.what()));
    } catch (std::invalid_argument const& error) { // keyframes of other numbers of keys
        emit failed(QString::fromStdString(error.what()));
    }
}

void CurveWidget::fitCurve()
{
    CurvePoints const points = getPoints();
    QRectF bounds(0.0, 0.0, 1.0, 1.0);
    if (axis == Axis::Stops) {
        bounds.setLeft(firstStop);
        bounds.setRight(lastStop);
    }
    for (std::size_t key = 0; key < CurveEditing::countKeys(points); ++key) {
        GePoint2<float> const place = CurveEditing::getKey(points, key);
        bool const isOnAxis = axis == Axis::Linear || place.x > 0.0F;
        bounds.setLeft(isOnAxis ? std::min(bounds.left(), toAxis(place.x)) : bounds.left());
        bounds.setRight(isOnAxis ? std::max(bounds.right(), toAxis(place.x)) : bounds.right());
        bounds.setTop(std::min<double>(bounds.top(), place.y));
        bounds.setBottom(std::max<double>(bounds.bottom(), place.y));
    }
    double const dx = bounds.width() * 0.08;
    double const dy = bounds.height() * 0.08;
    range = bounds.adjusted(-dx, -dy, dx, dy);
    update();
}

double CurveWidget::toAxis(double x) const
{
    if (axis == Axis::Linear) {
        return x;
    }
    return x > 0.0 ? std::log2(x) : -farStop;
}

double CurveWidget::fromAxis(double place) const
{
    return axis == Axis::Linear ? place : std::exp2(std::clamp(place, -farStop, farStop));
}

QPointF CurveWidget::toWidget(GePoint2<float> const& place) const
{
    return {(toAxis(place.x) - range.left()) / range.width() * width(),
            height() - (place.y - range.top()) / range.height() * height()};
}

GePoint2<float> CurveWidget::toCurve(QPointF const& place) const
{
    return {static_cast<float>(fromAxis(range.left() + place.x() / width() * range.width())),
            static_cast<float>(range.top() + (height() - place.y()) / height() * range.height())};
}

std::vector<float> CurveWidget::makeSamplePlaces() const
{
    std::vector<float> places;
    for (int x = 0; x <= width(); ++x) {
        places.push_back(toCurve(QPointF(x, 0)).x);
    }
    return places;
}

void CurveWidget::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.fillRect(rect(), Theme::field);
    drawGrid(painter);
    painter.setRenderHint(QPainter::Antialiasing);
    drawTransfer(painter);
    for (int curve = ControllerLink::nbChannels - 1; curve >= 0; --curve) {
        if (curve != getFirstChannel()) {
            drawCurve(painter, curve);
        }
    }
    drawCurve(painter, getFirstChannel());
    drawKeys(painter);
    if (rubber.has_value()) {
        painter.setPen(QPen(Theme::accent, 1.0, Qt::DotLine));
        painter.setBrush(Qt::NoBrush);
        painter.drawRect(rubber->normalized());
    }
}

void CurveWidget::drawGrid(QPainter& painter) const
{
    QFont small = font();
    small.setPointSizeF(small.pointSizeF() * 0.85);
    painter.setFont(small);
    FigureAxis ticks;
    ticks.low = range.left();
    ticks.high = range.right();
    ticks.unit = axis == Axis::Stops ? FigureAxis::Unit::Stop : FigureAxis::Unit::Value;
    for (PlotTick const& tick : makeTicks(ticks)) {
        double const x = (tick.place - range.left()) / range.width() * width();
        painter.setPen(Theme::grid);
        painter.drawLine(QPointF(x, 0), QPointF(x, height()));
        painter.setPen(Theme::dimText);
        painter.drawText(QPointF(x + 3, height() - 4), QString::fromStdString(tick.label));
    }
    ticks.low = range.top();
    ticks.high = range.bottom();
    ticks.unit = FigureAxis::Unit::Value;
    for (PlotTick const& tick : makeTicks(ticks)) {
        double const y = toWidget({1.0F, static_cast<float>(tick.place)}).y();
        painter.setPen(Theme::grid);
        painter.drawLine(QPointF(0, y), QPointF(width(), y));
        painter.setPen(Theme::dimText);
        painter.drawText(QPointF(4, y - 3), QString::fromStdString(tick.label));
    }
    painter.setPen(Theme::frame);
    painter.drawRect(QRectF(toWidget({0.0F, 1.0F}), toWidget({1.0F, 0.0F})));
}

void CurveWidget::drawTransfer(QPainter& painter) const
{
    ControllerLink const& link = document.getLink();
    ControllerLink::Mode const mode = document.getMode();
    std::array<float, ControllerLink::nbParams> params{};
    for (int param = 0; param < ControllerLink::nbParams; ++param) {
        params[static_cast<std::size_t>(param)] = static_cast<float>(
            document.getNumber(link.getParamInputName(mode, param, getFirstChannel())));
    }
    // In parts, because samples are evenly spread over values and not over stops.
    QPolygonF line;
    int const samples = std::max(width() / nbTransferParts, 2);
    for (int part = 0; part < nbTransferParts; ++part) {
        auto const edge = [&](int index) {
            return static_cast<float>(
                fromAxis(range.left() + range.width() * index / nbTransferParts));
        };
        float const low = edge(part);
        float const high = edge(part + 1);
        float const step = (high - low) / static_cast<float>(samples);
        if (!(low + step > low && high + step > high)) {
            continue; // so near that floats cannot tell the places apart
        }
        for (GePoint2<float> const& point : link.computeCurve(mode, params, {low, high}, samples)) {
            if (std::isfinite(point.y)) {
                line.append(toWidget(point));
            }
        }
    }
    painter.setPen(QPen(Theme::dimText, 1.2, Qt::DashDotLine));
    painter.drawPolyline(line);
}

void CurveWidget::drawCurve(QPainter& painter, int curve) const
{
    std::vector<float> const places = makeSamplePlaces();
    CurvePoints const points = document.getCurve(curve);
    if (points.empty()) {
        return;
    }
    std::vector<float> const values = document.getLink().mapThroughCurve(points, places);
    QPolygonF line;
    for (std::size_t index = 0; index < places.size(); ++index) {
        line.append(toWidget({places[index], values[index]}));
    }
    bool const isEdited = channel == allChannels || curve == channel;
    QColor color = Theme::channels[curve];
    color.setAlphaF(isEdited ? 1.0F : 0.6F);
    painter.setPen(QPen(color, isEdited ? 2.0 : 1.4, styles[curve]));
    painter.drawPolyline(line);
}

void CurveWidget::drawKeys(QPainter& painter) const
{
    CurvePoints const points = getPoints();
    auto const single = getSelectedKey();
    if (single.has_value()) {
        QPointF const key = toWidget(CurveEditing::getKey(points, *single));
        painter.setPen(QPen(Theme::text, 1.0));
        painter.setBrush(Theme::field);
        for (Side const side : {Side::Incoming, Side::Outgoing}) {
            QPointF const handle = toWidget(CurveEditing::getCountingHandle(points, *single, side));
            painter.drawLine(key, handle);
            painter.drawEllipse(handle, handleRadius, handleRadius);
        }
    }
    for (std::size_t key = 0; key < CurveEditing::countKeys(points); ++key) {
        bool const isChosen = isSelected(key);
        painter.setPen(QPen(isChosen ? Theme::accent : Theme::text, 1.4));
        painter.setBrush(isChosen ? Theme::accent : Theme::field);
        QPointF const place = toWidget(CurveEditing::getKey(points, key));
        painter.drawRect(
            QRectF(place.x() - keyRadius, place.y() - keyRadius, 2 * keyRadius, 2 * keyRadius));
    }
}

/// The selected key's handles lie above keys; a handle that lies on its key is not to be had.
std::optional<CurveWidget::Grip> CurveWidget::findGrip(QPointF const& place) const
{
    CurvePoints const points = getPoints();
    for (std::size_t key = 0; key < CurveEditing::countKeys(points); ++key) {
        if (measure(toWidget(CurveEditing::getKey(points, key)), place) <= gripReach) {
            return Grip{key, {}};
        }
    }
    auto const single = getSelectedKey();
    if (single.has_value()) {
        for (Side const side : {Side::Incoming, Side::Outgoing}) {
            QPointF const handle = toWidget(CurveEditing::getCountingHandle(points, *single, side));
            if (measure(handle, place) <= gripReach) {
                return Grip{*single, side};
            }
        }
    }
    return {};
}

bool CurveWidget::isOnCurve(QPointF const& place) const
{
    std::vector<float> places;
    for (double x = place.x() - curveReach; x <= place.x() + curveReach; x += 1.0) {
        places.push_back(toCurve(QPointF(x, 0)).x);
    }
    std::vector<float> const values = document.getLink().mapThroughCurve(getPoints(), places);
    for (std::size_t index = 0; index < places.size(); ++index) {
        if (measure(toWidget({places[index], values[index]}), place) <= curveReach) {
            return true;
        }
    }
    return false;
}

void CurveWidget::mousePressEvent(QMouseEvent* event)
{
    pressed = event->position();
    isPanning = event->button() == Qt::MiddleButton;
    if (event->button() != Qt::LeftButton) {
        return;
    }
    gripped = findGrip(pressed);
    bool const isToggle = event->modifiers() & Qt::ControlModifier;
    if (isToggle && gripped.has_value() && !gripped->handle.has_value()) {
        toggle(gripped->key);
        gripped.reset();
        return;
    }
    if (!gripped.has_value() && (isToggle || !isOnCurve(pressed))) {
        select({});
        rubber = QRectF(pressed, pressed);
        return;
    }
    document.beginDrag(
        gripped.has_value() ? gripped->handle.has_value() ? "Move handle" : "Move key" : "Add key");
    if (!gripped.has_value()) {
        CurveEditing::Insertion const added =
            CurveEditing::insertKey(getPoints(), toCurve(pressed).x);
        apply("Add key", added.points);
        gripped = Grip{added.key, {}};
        select({added.key});
    }
    if (!isSelected(gripped->key)) {
        select({gripped->key});
    }
    pointsAtPress = getPoints();
}

void CurveWidget::mouseMoveEvent(QMouseEvent* event)
{
    if (isPanning) {
        QPointF const moved = event->position() - pressed;
        range.translate(-moved.x() / width() * range.width(),
                        moved.y() / height() * range.height());
        pressed = event->position();
        update();
    } else if (rubber.has_value()) {
        rubber->setBottomRight(event->position());
        selectWithin(rubber->normalized());
    } else if (gripped.has_value()) {
        moveGrip(event->position(), event->modifiers());
    }
}

void CurveWidget::moveGrip(QPointF const& place, Qt::KeyboardModifiers modifiers)
{
    GePoint2<float> const from = toCurve(pressed);
    GePoint2<float> const to = toCurve(place);
    GePoint2<float> moved{to.x - from.x, to.y - from.y};
    if (modifiers & Qt::ShiftModifier) {
        QPointF const distance = place - pressed;
        bool const isAlongX = std::abs(distance.x()) >= std::abs(distance.y());
        (isAlongX ? moved.y : moved.x) = 0.0F;
    }
    if (gripped->handle.has_value()) {
        GePoint2<float> const handle =
            CurveEditing::getCountingHandle(pointsAtPress, gripped->key, *gripped->handle);
        Handles const kind = CurveEditing::classifyHandles(pointsAtPress, gripped->key);
        bool const isAlone = modifiers & Qt::AltModifier || kind == Handles::Broken;
        Handles const kept = kind == Handles::Mirrored ? kind : Handles::Smooth;
        apply("Move handle", CurveEditing::moveHandle(pointsAtPress, gripped->key, *gripped->handle,
                                                      {handle.x + moved.x, handle.y + moved.y},
                                                      isAlone ? Handles::Broken : kept));
    } else {
        apply("Move key", CurveEditing::moveKeys(pointsAtPress, selection, moved.x, moved.y));
    }
}

void CurveWidget::mouseReleaseEvent(QMouseEvent*)
{
    gripped.reset();
    rubber.reset();
    isPanning = false;
    document.endDrag();
    update();
}

void CurveWidget::wheelEvent(QWheelEvent* event)
{
    double const factor = std::pow(
        curveZoomPerNotch, -event->angleDelta().y() / double{QWheelEvent::DefaultDeltasPerStep});
    GePoint2<float> const about = toCurve(event->position());
    double const newWidth = std::clamp(range.width() * factor, leastRange, greatestRange);
    double const newHeight = std::clamp(range.height() * factor, leastRange, greatestRange);
    double const x = toAxis(about.x);
    range =
        QRectF(x - (x - range.left()) * newWidth / range.width(),
               about.y - (about.y - range.top()) * newHeight / range.height(), newWidth, newHeight);
    update();
    event->accept();
}

void CurveWidget::keyPressEvent(QKeyEvent* event)
{
    switch (event->key()) {
    case Qt::Key_Delete:
    case Qt::Key_Backspace: removeSelectedKeys(); break;
    case Qt::Key_Left: nudge(-nudgeStep, 0.0F, event->modifiers()); break;
    case Qt::Key_Right: nudge(nudgeStep, 0.0F, event->modifiers()); break;
    case Qt::Key_Up: nudge(0.0F, nudgeStep, event->modifiers()); break;
    case Qt::Key_Down: nudge(0.0F, -nudgeStep, event->modifiers()); break;
    case Qt::Key_F: fitCurve(); break;
    case Qt::Key_Escape:
        if (gripped.has_value()) {
            gripped.reset();
            select({});
            document.abandonDrag();
        }
        break;
    default: QWidget::keyPressEvent(event);
    }
}

void CurveWidget::nudge(float dx, float dy, Qt::KeyboardModifiers modifiers)
{
    if (!selection.empty()) {
        float const factor = findNudgeFactor(modifiers);
        apply("Nudge key",
              CurveEditing::moveKeys(getPoints(), selection, dx * factor, dy * factor));
    }
}

void CurveWidget::select(CurveEditing::Selection const& keys)
{
    selection = keys;
    update();
    emit selectionChanged();
}

void CurveWidget::toggle(std::size_t key)
{
    CurveEditing::Selection keys = selection;
    if (isSelected(key)) {
        keys.erase(std::find(keys.begin(), keys.end(), key));
    } else {
        keys.insert(std::upper_bound(keys.begin(), keys.end(), key), key);
    }
    select(keys);
}

void CurveWidget::selectWithin(QRectF const& bounds)
{
    CurvePoints const points = getPoints();
    CurveEditing::Selection keys;
    for (std::size_t key = 0; key < CurveEditing::countKeys(points); ++key) {
        if (bounds.contains(toWidget(CurveEditing::getKey(points, key)))) {
            keys.push_back(key);
        }
    }
    select(keys);
}

void CurveWidget::refresh()
{
    if (!selection.empty() && selection.back() >= CurveEditing::countKeys(getPoints())) {
        selection.clear();
    }
    update();
    emit selectionChanged();
}
