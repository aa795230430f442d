#pragma once

#include "editor/view/window/Actions.h"

#include <QLineEdit>
#include <optional>

/// A number: typed, also as a sum; dragged sideways, finely with Ctrl; stepped by the wheel and the
/// arrow keys while it has the focus. It says what is wanted and shows what it is told.
class NumberField : public QLineEdit {
    Q_OBJECT

public:
    explicit NumberField(double stepSize, QWidget* parent = nullptr);

    static KeyHelps getKeyHelps();

    void showNumber(double newNumber);
    double getNumber() const { return number; }

    /// The tip, but while something is refused.
    void setHelp(QString const& newHelp);

    /// Shows where the number lies in that range, by a line below it.
    void setSlider(double from, double to);

    /// Marks what was asked for as refused, in place, with the reason.
    void refuse(QString const& reason);

signals:
    void entered(double number);
    void dragBegan();
    void dragged(double number);
    void dragEnded();
    void dragAbandoned();
    void doubleClicked();

protected:
    /// What has been typed.
    virtual void take(QString const& typed);

    bool event(QEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void commit();
    void markRefused(bool isRefused);
    double scaleStep(Qt::KeyboardModifiers modifiers) const;

    double step;
    QString help;
    double sliderFrom = 0.0;
    double sliderTo = 0.0; ///< not above sliderFrom: there is none
    double number = 0.0;
    std::optional<double> dragStart; ///< the number at the press
    double dragX = 0.0;
    bool isDragging = false;
};
