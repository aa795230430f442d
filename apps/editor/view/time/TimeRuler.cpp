#include "editor/view/time/TimeRuler.h"

#include "editor/view/time/KeyButton.h"
#include "editor/view/window/Theme.h"
#include "runtime/values/NumberText.h"

#include <QHelpEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QToolTip>
#include <algorithm>
#include <cmath>

namespace {

constexpr double sideMargin = 12.0;
constexpr double scaleHeight = 20.0; // numbers
constexpr double framesHeight = 5.0; // what is known of the frames
constexpr double diamondRadius = 5.0;
constexpr double diamondReach = 7.0;
constexpr int keyDragBegins = 4;
constexpr double labelWidth = 58.0; // that a number has at least

QString formatMoment(double time)
{
    return QString::fromStdString(formatNumber(time));
}

/// 1, 2, 5, 10, 20 and so on: the first that gives numbers room.
Frame chooseStep(double pixelsPerFrame)
{
    for (Frame unit = 1;; unit *= 10) {
        for (Frame const factor : {1, 2, 5}) {
            if (static_cast<double>(unit * factor) * pixelsPerFrame >= labelWidth) {
                return unit * factor;
            }
        }
    }
}

} // namespace

TimeRuler::TimeRuler(Document& editedDocument, Plate& shownPlate, Timeline& shownTimeline,
                     QWidget* parent)
    : QWidget(parent), document(editedDocument), plate(shownPlate), timeline(shownTimeline),
      keys(document)
{
    setFocusPolicy(Qt::StrongFocus);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setAccessibleName(tr("Frames and keys"));
    document.getNode().addHandler(&changed);
    document.addTimeHandler(&timeChanged);
    plate.addFramesHandler(&framesChanged);
    timeline.addHandler(&timelineChanged);
    refreshKeys();
}

KeyHelps TimeRuler::getKeyHelps()
{
    return {{tr("Press or drag above"), tr("go to that frame")},
            {tr("Click on a diamond"), tr("select that key; Ctrl one more or less")},
            {tr("Drag diamonds"), tr("move the selected keys; Ctrl copies them")},
            {tr("Drag from an empty place below"), tr("select the keys within")},
            {tr("Double-click on a diamond"), tr("go to that key")},
            {tr("Return"), tr("select the key at this frame")},
            {tr("Shift+Left, Shift+Right"), tr("move the selected keys by a frame")},
            {tr("Ctrl+A, Ctrl+C, Ctrl+V"),
             tr("select all keys; copy the selected ones; put them at this frame")},
            {tr("Delete"), tr("remove the selected keys")},
            {tr("Esc"), tr("take back what is being dragged; select nothing")}};
}

void TimeRuler::setNames(Keys::Names const& newNames)
{
    names = newNames;
    select({});
    refreshKeys();
}

void TimeRuler::refreshKeys()
{
    shownKeys = keys.list(names);
    if (hand != Hand::Drag) {
        std::erase_if(selection, [this](double time) { return !shownKeys.contains(time); });
        emit selectionChanged();
    }
    update();
}

void TimeRuler::select(Keys::Times const& times)
{
    selection = times;
    update();
    emit selectionChanged();
}

void TimeRuler::selectAll()
{
    Keys::Times all;
    for (auto const& [time, keyed] : shownKeys) {
        all.insert(time);
    }
    select(all);
}

void TimeRuler::removeSelected()
{
    if (!selection.empty()) {
        keys.remove(names, selection);
    }
}

void TimeRuler::copySelected()
{
    if (!selection.empty()) {
        keys.copy(names, selection);
    }
}

void TimeRuler::paste()
{
    if (!keys.canPaste()) {
        return;
    }
    try {
        select(keys.paste());
    } catch (ValueError const& error) {
        emit failed(QString::fromStdString(error.what()));
    }
}

void TimeRuler::nudgeSelected(Frame by)
{
    if (selection.empty() || hand != Hand::None) {
        return;
    }
    hand = Hand::Drag;
    Keys::Times moved;
    for (double const time : selection) {
        moved.insert(time + static_cast<double>(by));
    }
    keys.beginDrag(names, selection, Keys::Drag::Move);
    keys.drag(static_cast<double>(by));
    document.endDrag();
    hand = Hand::None;
    select(moved);
}

double TimeRuler::toX(double time) const
{
    FrameRange const& range = timeline.getRange();
    double const length = static_cast<double>(range.last - range.first);
    double const share = length > 0.0 ? (time - static_cast<double>(range.first)) / length : 0.5;
    return sideMargin + share * (width() - 2 * sideMargin);
}

double TimeRuler::toTime(double x) const
{
    FrameRange const& range = timeline.getRange();
    double const share = (x - sideMargin) / std::max(width() - 2 * sideMargin, 1.0);
    return static_cast<double>(range.first) + share * static_cast<double>(range.last - range.first);
}

Frame TimeRuler::toFrame(double x) const
{
    FrameRange const& range = timeline.getRange();
    return std::clamp(static_cast<Frame>(std::llround(toTime(x))), range.first, range.last);
}

QPointF TimeRuler::toWidget(double time) const
{
    double const top = scaleHeight + framesHeight;
    return {toX(time), top + (height() - top) / 2};
}

std::optional<double> TimeRuler::findKey(QPointF const& place) const
{
    std::optional<double> nearest;
    for (auto const& [time, keyed] : shownKeys) {
        double const distance = std::abs(toX(time) - place.x());
        if (distance <= diamondReach &&
            (!nearest.has_value() || distance < std::abs(toX(*nearest) - place.x()))) {
            nearest = time;
        }
    }
    return place.y() >= scaleHeight ? nearest : std::nullopt;
}

bool TimeRuler::event(QEvent* event)
{
    if (event->type() == QEvent::ToolTip) {
        auto const* const help = static_cast<QHelpEvent*>(event);
        auto const key = findKey(help->pos());
        QString text;
        if (key.has_value()) {
            QStringList lines;
            for (std::string const& name : shownKeys.at(*key)) {
                lines << QString::fromStdString(name);
            }
            text = tr("Key at %1: %2").arg(formatMoment(*key), lines.join(", "));
        } else {
            Frame const frame = toFrame(help->pos().x());
            bool const isKnown = plate.isSequence();
            FrameState const state = isKnown ? plate.getState(frame) : FrameState::Held;
            text = tr("Frame %1").arg(frame) +
                   (state == FrameState::Missing           ? tr(": missing")
                    : state == FrameState::Unreadable      ? tr(": cannot be read")
                    : isKnown && state == FrameState::Held ? tr(": in memory")
                                                           : QString());
        }
        QToolTip::showText(help->globalPos(), text, this);
        return true;
    }
    if (event->type() == QEvent::FocusIn || event->type() == QEvent::FocusOut) {
        update();
    }
    return QWidget::event(event);
}

void TimeRuler::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton) {
        return;
    }
    pressed = pointed = event->position();
    before = selection;
    isToggle = event->modifiers() & Qt::ControlModifier;
    auto const key = findKey(pressed);
    if (key.has_value()) {
        hand = Hand::Press;
        pressedKey = *key;
        if (!isToggle && !selection.contains(*key)) {
            select({*key});
        }
    } else if (pressed.y() < scaleHeight + framesHeight) {
        hand = Hand::Scrub;
        timeline.goTo(static_cast<double>(toFrame(pressed.x())));
    } else {
        hand = Hand::Band;
        if (!isToggle) {
            select({});
        }
    }
}

void TimeRuler::mouseMoveEvent(QMouseEvent* event)
{
    pointed = event->position();
    switch (hand) {
    case Hand::None: break;
    case Hand::Scrub: timeline.goTo(static_cast<double>(toFrame(pointed.x()))); break;
    case Hand::Press:
        if (std::abs(pointed.x() - pressed.x()) >= keyDragBegins) {
            if (!selection.contains(pressedKey)) {
                select({pressedKey});
            }
            before = selection;
            draggedBy = 0.0;
            keys.beginDrag(names, selection, isToggle ? Keys::Drag::Copy : Keys::Drag::Move);
            hand = Hand::Drag;
            dragKeys(pointed);
        }
        break;
    case Hand::Drag: dragKeys(pointed); break;
    case Hand::Band: selectWithin(pressed.x(), pointed.x(), isToggle ? before : Keys::Times());
    }
}

/// By whole frames, so that keys at frames stay at frames.
void TimeRuler::dragKeys(QPointF const& place)
{
    double const by = std::round(toTime(place.x()) - toTime(pressed.x()));
    if (by == draggedBy) {
        return;
    }
    draggedBy = by;
    keys.drag(by);
    Keys::Times moved;
    for (double const time : before) {
        moved.insert(time + by);
    }
    select(moved);
}

void TimeRuler::mouseReleaseEvent(QMouseEvent*)
{
    Hand const was = std::exchange(hand, Hand::None);
    if (was == Hand::Drag) {
        document.endDrag();
    } else if (was == Hand::Press && isToggle) {
        Keys::Times toggled = selection;
        if (!toggled.erase(pressedKey)) {
            toggled.insert(pressedKey);
        }
        select(toggled);
    } else if (was == Hand::Press) {
        select({pressedKey});
    }
    update();
}

void TimeRuler::mouseDoubleClickEvent(QMouseEvent* event)
{
    auto const key = findKey(event->position());
    if (key.has_value()) {
        timeline.goTo(*key);
    }
}

void TimeRuler::selectWithin(double fromX, double untilX, Keys::Times const& besides)
{
    Keys::Times within = besides;
    for (auto const& [time, keyed] : shownKeys) {
        double const x = toX(time);
        if (x >= std::min(fromX, untilX) && x <= std::max(fromX, untilX)) {
            within.insert(time);
        }
    }
    select(within);
}

void TimeRuler::abandon()
{
    Hand const was = std::exchange(hand, Hand::None);
    if (was == Hand::Drag) {
        document.abandonDrag();
        select(before);
    } else {
        select({});
    }
}

void TimeRuler::keyPressEvent(QKeyEvent* event)
{
    bool const isShift = event->modifiers() == Qt::ShiftModifier;
    if (event->matches(QKeySequence::Copy)) {
        copySelected();
    } else if (event->matches(QKeySequence::Paste)) {
        paste();
    } else if (event->matches(QKeySequence::SelectAll)) {
        selectAll();
    } else if (event->key() == Qt::Key_Delete || event->key() == Qt::Key_Backspace) {
        removeSelected();
    } else if (event->key() == Qt::Key_Escape) {
        event->setAccepted(hand != Hand::None); // otherwise it may mean something else, too
        abandon();
    } else if (isShift && (event->key() == Qt::Key_Left || event->key() == Qt::Key_Right)) {
        nudgeSelected(event->key() == Qt::Key_Left ? -1 : 1);
    } else if ((event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) &&
               shownKeys.contains(timeline.getTime())) {
        select({timeline.getTime()});
    } else {
        QWidget::keyPressEvent(event);
    }
}

void TimeRuler::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.fillRect(rect(), Theme::field);
    drawScale(painter);
    drawFrames(painter);
    painter.setRenderHint(QPainter::Antialiasing);
    drawMoment(painter);
    drawKeys(painter);
    if (hand == Hand::Band) {
        painter.setPen(QPen(Theme::accent, 1.0, Qt::DotLine));
        painter.setBrush(Qt::NoBrush);
        painter.drawRect(QRectF(QPointF(pressed.x(), scaleHeight + framesHeight + 1),
                                QPointF(pointed.x(), height() - 1)));
    }
    if (hasFocus()) {
        painter.setPen(Theme::accent);
        painter.setBrush(Qt::NoBrush);
        painter.drawRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5));
    }
}

void TimeRuler::drawScale(QPainter& painter) const
{
    FrameRange const& range = timeline.getRange();
    QFont small = font();
    small.setPointSizeF(small.pointSizeF() * 0.85);
    painter.setFont(small);
    auto const frames = static_cast<double>(std::max<Frame>(range.last - range.first, 1));
    Frame const step = chooseStep((width() - 2 * sideMargin) / frames);
    Frame const rest = (range.first % step + step) % step;
    for (Frame frame = rest == 0 ? range.first : range.first + step - rest; frame <= range.last;
         frame += step) {
        double const x = std::round(toX(static_cast<double>(frame))) + 0.5;
        painter.setPen(Theme::frame);
        painter.drawLine(QPointF(x, scaleHeight - 5), QPointF(x, scaleHeight));
        painter.setPen(Theme::dimText);
        drawNumber(painter, x, frame);
    }
}

/// Whole at the ends, too.
void TimeRuler::drawNumber(QPainter& painter, double x, Frame frame) const
{
    constexpr double fromEdge = 2.0;
    QString const number = QString::number(frame);
    double const half = painter.fontMetrics().horizontalAdvance(number) / 2.0 + fromEdge;
    double const middle =
        std::clamp(x, std::min(half, width() / 2.0), std::max(width() - half, width() / 2.0));
    painter.drawText(QRectF(middle - half, 0, 2 * half, scaleHeight - 4), Qt::AlignCenter, number);
}

/// Of some frames, what has to be known first.
FrameState TimeRuler::findState(Frame first, Frame last) const
{
    constexpr Frame mostLooked = 8; // where many share a pixel
    FrameState worst = FrameState::Held;
    Frame const stride = (last - first) / mostLooked + 1;
    for (Frame frame = first; frame <= last; frame += stride) {
        FrameState const state = plate.getState(frame);
        if (state == FrameState::Unreadable) {
            return state;
        }
        worst = state == FrameState::Missing                                ? state
                : state == FrameState::Waiting && worst == FrameState::Held ? state
                                                                            : worst;
    }
    return worst;
}

void TimeRuler::drawFrames(QPainter& painter) const
{
    QRectF const lane(0, scaleHeight, width(), framesHeight);
    painter.fillRect(lane, Theme::panel);
    if (!plate.isSequence()) {
        return;
    }
    FrameRange const& range = timeline.getRange();
    auto const frames = static_cast<double>(range.last - range.first + 1);
    double const pixels = width() - 2 * sideMargin;
    int const nbCells = static_cast<int>(std::clamp(frames, 1.0, std::max(pixels, 1.0)));
    double const half = pixels / std::max(frames - 1, 1.0) / 2;
    for (int cell = 0; cell < nbCells; ++cell) {
        auto const edge = [&](int index) {
            return range.first + static_cast<Frame>(std::floor(frames * index / nbCells));
        };
        Frame const first = edge(cell);
        Frame const last = std::max(first, edge(cell + 1) - 1);
        double const left = toX(static_cast<double>(first)) - half;
        double const right = toX(static_cast<double>(last)) + half;
        QRectF const place(left, scaleHeight + 1, std::max(right - left, 1.0), framesHeight - 2);
        switch (findState(first, last)) {
        case FrameState::Held: painter.fillRect(place, Theme::dimText); break;
        case FrameState::Waiting: break;
        case FrameState::Missing:
            painter.fillRect(place, QBrush(Theme::failure, Qt::BDiagPattern));
            break;
        case FrameState::Unreadable: painter.fillRect(place, Theme::failure); break;
        }
    }
}

void TimeRuler::drawKeys(QPainter& painter) const
{
    for (auto const& [time, keyed] : shownKeys) {
        bool const isSelected = selection.contains(time);
        painter.setPen(QPen(isSelected ? Theme::accent : Theme::text, 1.4));
        painter.setBrush(isSelected ? Theme::accent : Theme::field);
        drawDiamond(painter, toWidget(time), diamondRadius);
    }
}

void TimeRuler::drawMoment(QPainter& painter) const
{
    FrameRange const& range = timeline.getRange();
    double const time = timeline.getTime();
    double const x = std::clamp(toX(time), 1.0, width() - 1.0);
    painter.setPen(QPen(Theme::accent, 1.6));
    painter.setBrush(Theme::accent);
    if (time < static_cast<double>(range.first) || time > static_cast<double>(range.last)) {
        double const back = time < static_cast<double>(range.first) ? 6.0 : -6.0;
        QPointF const arrow[] = {
            {x, scaleHeight / 2}, {x + back, scaleHeight / 2 - 4}, {x + back, scaleHeight / 2 + 4}};
        painter.drawPolygon(arrow, 3);
        return;
    }
    // Below the frames' numbers, which can be read.
    double const tip = scaleHeight;
    painter.drawLine(QPointF(x, tip), QPointF(x, height()));
    QPointF const head[] = {{x - 4, tip - 6}, {x + 4, tip - 6}, {x, tip}};
    painter.drawPolygon(head, 3);
}

#include "editor/view/time/moc_TimeRuler.cpp"
