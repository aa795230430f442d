#include "editor/view/parameters/NumberField.h"

#include "editor/model/parameters/NumberExpression.h"
#include "editor/view/window/Theme.h"
#include "runtime/values/NumberText.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QStyle>
#include <QToolTip>
#include <QWheelEvent>
#include <algorithm>
#include <cmath>

namespace {

constexpr double pixelsPerStep = 4.0;
constexpr double dragThreshold = 4.0; // pixels

/// Without the digits that come of adding steps up.
double roundToStep(double number, double step)
{
    double const unitsPerOne = std::round(100.0 / step);
    double const rounded = std::round(number * unitsPerOne) / unitsPerOne;
    return std::isfinite(rounded) ? rounded : number;
}

} // namespace

NumberField::NumberField(double stepSize, QWidget* parent) : QLineEdit(parent), step(stepSize)
{
    setAlignment(Qt::AlignRight);
    setMinimumWidth(62);
    connect(this, &QLineEdit::returnPressed, this, &NumberField::commit);
    showNumber(0.0);
}

KeyHelps NumberField::getKeyHelps()
{
    return {{tr("Type"), tr("a number or a sum, such as 0.18*2")},
            {tr("Drag sideways"), tr("change it; Ctrl finely, Shift coarsely")},
            {tr("Up, Down, wheel"), tr("a step, while it has the focus")},
            {tr("Double-click"), tr("reset the parameter")},
            {tr("Esc"), tr("take back what was typed or dragged")}};
}

void NumberField::showNumber(double newNumber)
{
    number = newNumber;
    markRefused(false);
    setText(QString::fromStdString(formatNumber(static_cast<float>(number))));
    setCursorPosition(0);
}

void NumberField::setHelp(QString const& newHelp)
{
    help = newHelp;
    setToolTip(help);
}

void NumberField::setSlider(double from, double to)
{
    sliderFrom = from;
    sliderTo = to;
    update();
}

void NumberField::paintEvent(QPaintEvent* event)
{
    QLineEdit::paintEvent(event);
    if (!(sliderFrom < sliderTo)) {
        return;
    }
    constexpr int margin = 4;
    constexpr double thickness = 2.0;
    double const width = rect().width() - 2 * margin;
    double const filled = std::clamp((number - sliderFrom) / (sliderTo - sliderFrom), 0.0, 1.0);
    QRectF const line(margin, rect().height() - thickness - 2, width, thickness);
    QPainter painter(this);
    painter.fillRect(line, Theme::grid);
    QRectF reached = line;
    reached.setWidth(width * filled);
    painter.fillRect(reached, isEnabled() ? Theme::dimText : Theme::frame);
}

void NumberField::refuse(QString const& reason)
{
    markRefused(true);
    setToolTip(reason);
    if (hasFocus()) { // who types has no cursor on the field
        QToolTip::showText(mapToGlobal(QPoint(0, height())), reason, this);
    }
}

void NumberField::markRefused(bool isRefused)
{
    if (property("refused").toBool() != isRefused) {
        setProperty("refused", isRefused);
        style()->unpolish(this);
        style()->polish(this);
    }
    if (!isRefused) {
        setToolTip(help);
    }
}

void NumberField::commit()
{
    if (!isModified()) {
        return;
    }
    setModified(false);
    take(text());
}

void NumberField::take(QString const& typed)
{
    auto const value = evaluateExpression(typed.toStdString());
    if (value.has_value()) {
        emit entered(*value);
    } else {
        refuse(tr("“%1” is no number or sum").arg(typed));
    }
}

double NumberField::scaleStep(Qt::KeyboardModifiers modifiers) const
{
    double const factor = modifiers & Qt::ControlModifier ? 0.1
                          : modifiers & Qt::ShiftModifier ? 10.0
                                                          : 1.0;
    return step * factor;
}

void NumberField::mousePressEvent(QMouseEvent* event)
{
    dragStart = number;
    dragX = event->position().x();
    if (hasFocus()) {
        QLineEdit::mousePressEvent(event);
    }
}

void NumberField::mouseMoveEvent(QMouseEvent* event)
{
    double const distance = event->position().x() - dragX;
    if (!dragStart.has_value() || (!isDragging && std::abs(distance) < dragThreshold)) {
        return;
    }
    if (!isDragging) {
        isDragging = true;
        deselect();
        setCursor(Qt::SizeHorCursor);
        emit dragBegan();
    }
    double const moved = std::round(distance / pixelsPerStep) * scaleStep(event->modifiers());
    emit dragged(roundToStep(*dragStart + moved, step));
}

void NumberField::mouseReleaseEvent(QMouseEvent* event)
{
    dragStart.reset();
    if (isDragging) {
        isDragging = false;
        unsetCursor();
        emit dragEnded();
        return;
    }
    setFocus(Qt::MouseFocusReason);
    if (!hasSelectedText()) {
        selectAll();
    }
    QLineEdit::mouseReleaseEvent(event);
}

void NumberField::mouseDoubleClickEvent(QMouseEvent* event)
{
    QLineEdit::mouseDoubleClickEvent(event);
    if (event->button() == Qt::LeftButton) {
        emit doubleClicked();
    }
}

void NumberField::wheelEvent(QWheelEvent* event)
{
    if (!hasFocus()) {
        event->ignore();
        return;
    }
    int const direction = event->angleDelta().y() > 0 ? 1 : -1;
    emit entered(roundToStep(number + direction * scaleStep(event->modifiers()), step));
    event->accept();
}

void NumberField::keyPressEvent(QKeyEvent* event)
{
    bool const isUp = event->key() == Qt::Key_Up;
    if (isUp || event->key() == Qt::Key_Down) {
        commit();
        emit entered(roundToStep(number + (isUp ? 1 : -1) * scaleStep(event->modifiers()), step));
    } else if (event->key() == Qt::Key_Escape) {
        // What has nothing to take back leaves it to the window around.
        event->setAccepted(isDragging || isModified() || property("refused").toBool());
        if (isDragging) {
            isDragging = false;
            dragStart.reset();
            unsetCursor();
            emit dragAbandoned();
        }
        setModified(false);
        showNumber(number);
        selectAll();
    } else {
        QLineEdit::keyPressEvent(event);
    }
}

/// What nobody has typed into leaves undo and redo to the window.
bool NumberField::event(QEvent* event)
{
    bool const isQuestion = event->type() == QEvent::ShortcutOverride;
    auto* const key = isQuestion ? static_cast<QKeyEvent*>(event) : nullptr;
    if (key != nullptr && !isModified() &&
        (key->matches(QKeySequence::Undo) || key->matches(QKeySequence::Redo))) {
        event->ignore();
        return true;
    }
    return QLineEdit::event(event);
}

void NumberField::focusOutEvent(QFocusEvent* event)
{
    commit();
    QLineEdit::focusOutEvent(event);
}

#include "editor/view/parameters/moc_NumberField.cpp"
