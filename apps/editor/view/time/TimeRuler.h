#pragma once

#include "editor/model/time/Keys.h"
#include "editor/model/time/Timeline.h"
#include "editor/view/window/Actions.h"

#include <QPointF>
#include <QWidget>
#include <optional>

/// The range of frames from left to right. Above, a press or drag goes to a frame; a line below the
/// numbers shows which ones are in memory, missing or unreadable. Below lie the keyframes: a click
/// selects, Ctrl and a click one more or less, a drag moves them (with Ctrl: copies), a drag from
/// an empty place selects those within.
class TimeRuler : public QWidget {
    Q_OBJECT

public:
    TimeRuler(Document& editedDocument, Plate& shownPlate, Timeline& shownTimeline,
              QWidget* parent = nullptr);

    /// Whose keyframes are shown; without any, those of all values.
    void setNames(Keys::Names const& newNames);
    Keys::Names const& getNames() const { return names; }

    Keys::Times const& getSelection() const { return selection; }
    void select(Keys::Times const& times);
    void selectAll();
    void removeSelected();
    void copySelected();
    void paste();
    void nudgeSelected(Frame by);

    /// Where a moment stands, in the middle of the keyframes' lane; what is beyond the range
    /// stands beyond the ends.
    QPointF toWidget(double time) const;

    static KeyHelps getKeyHelps();

    QSize sizeHint() const override { return {400, 48}; }
    QSize minimumSizeHint() const override { return {160, 48}; }

signals:
    /// An edit could not be made.
    void failed(QString const& sentence);
    void selectionChanged();

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    enum class Hand { None, Scrub, Press, Drag, Band };

    double toX(double time) const;
    double toTime(double x) const;
    Frame toFrame(double x) const;
    std::optional<double> findKey(QPointF const& place) const;
    void pressKey(double key, bool isToggle);
    void dragKeys(QPointF const& place);
    void selectWithin(double fromX, double toX, Keys::Times const& besides);
    void abandon();
    void refreshKeys();
    void drawScale(QPainter& painter) const;
    void drawNumber(QPainter& painter, double x, Frame frame) const;
    void drawFrames(QPainter& painter) const;
    void drawKeys(QPainter& painter) const;
    void drawMoment(QPainter& painter) const;
    FrameState findState(Frame first, Frame last) const;

    Document& document;
    Plate& plate;
    Timeline& timeline;
    Keys keys;
    Keys::Names names;
    std::map<double, Keys::Names> shownKeys;
    Keys::Times selection;
    Keys::Times before; ///< what was selected at the press
    Hand hand = Hand::None;
    double pressedKey = 0.0;
    bool isToggle = false;
    QPointF pressed;
    QPointF pointed;
    double draggedBy = 0.0;
    CbFunction<ValueChange const> changed{[this](ValueChange const&) { refreshKeys(); }};
    CbFunction<double const> timeChanged{[this](double const&) { update(); }};
    CbFunction<Plate const> framesChanged{[this](Plate const&) { update(); }};
    CbFunction<Timeline const> timelineChanged{[this](Timeline const&) { update(); }};
};
