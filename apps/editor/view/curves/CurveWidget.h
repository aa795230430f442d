#pragma once

#include "editor/view/curves/CurveHits.h"

#include <QWidget>
#include <optional>

class QNativeGestureEvent;

/// The graph of the node's curves: what CurvePainter draws, edited by mouse and keys. Keys are
/// handled by the widget's actions as well.
class CurveWidget : public QWidget {
    Q_OBJECT

public:
    explicit CurveWidget(CurveModel& shownModel, QWidget* parent = nullptr);

    CurveScale getScale() const;
    GraphRange getRange() const;
    void setRange(GraphRange const& range);

    /// The unit square with the edited curves' keys; with the plate's values as well.
    void fitCurve();
    void fitPicture();

    QPointF toWidget(GePoint2<float> const& place) const;

    /// What a failed edit is told by; edits made elsewhere, too.
    void attempt(std::function<void()> const& edit);

signals:
    /// An edit could not be made.
    void failed(QString const& sentence);
    /// What is under the cursor, or nothing.
    void pointed(QString const& text);
    /// A menu is asked for at a place of the widget.
    void menuAsked(QPoint const& place, QPoint const& onScreen);

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    bool focusNextPrevChild(bool isNext) override;

private:
    enum class Drag { None, Pan, Band, Keys, Handle, Pull };

    QAction* findAction(QKeyEvent const& event) const;
    void pressCurve(QMouseEvent const& event);
    void startDrag(Drag kind, std::string const& label);
    void continueDrag(QPointF const& place, Qt::KeyboardModifiers modifiers);
    void dragGrip(QPointF const& place, Qt::KeyboardModifiers modifiers);
    void pan(QPointF const& by);
    void zoom(QPointF const& about, double factorX, double factorY);
    void zoomByWheel(QWheelEvent const& event);
    void nudge(int key, Qt::KeyboardModifiers modifiers);
    void nudgeHandle(int key, CurveEditing::Side side);
    void giveUp();
    void hover(QPointF const& place);
    void tellPointed();
    void unhover();
    QString describe(QPointF const& place) const;
    void selectWithin(QRectF const& band);
    void showDisplay();

    CurveModel& model;
    CurveAxis shownAxis;
    Drag drag = Drag::None;
    std::optional<CurveGrip> gripped;
    QPointF pressed;
    QPointF grippedAt; ///< where the grip was then
    std::optional<QRectF> band;
    bool wasThere = false; ///< the key under the last press had been there before
    std::optional<QPointF> cursorAt;
    std::optional<CurveGrip> hovered;
    std::optional<int> hoveredCurve;

    CbFunction<CurveEditor const> edited{[this](CurveEditor const&) {
        tellPointed();
        update();
    }};
    CbFunction<CurveHistogram const> counted{[this](CurveHistogram const&) { update(); }};
    CbFunction<ValueChange const> changed{[this](ValueChange const&) { showDisplay(); }};
    CbFunction<PicksNotice const> picked{[this](PicksNotice const&) { update(); }};
};
