#pragma once

#include "editor/model/picture/Picks.h"

#include <QObject>
#include <QPointF>
#include <optional>

class PictureWidget;
class QKeyEvent;
class QMenu;
class QPainter;

/// The picks in the picture: draws their marks, and sets, moves and removes picks by mouse and
/// keys. The picture hands its events on; who takes one returns true. Places are the pane's.
class PickMarks : public QObject {
    Q_OBJECT

public:
    PickMarks(Picks& shownPicks, PictureWidget& itsPicture);

    void paint(QPainter& painter) const;
    bool press(QPointF const& place);
    bool move(QPointF const& place);
    bool release();
    bool pressKey(QKeyEvent const& event);

    /// A menu for the mark at a place; false if there is none.
    bool openMenu(QPointF const& place, QPoint const& onScreen);

signals:
    /// Others may add what they do with a pick.
    void menuOpening(QMenu& menu, int number);

private:
    /// What the left button is doing.
    struct Drag {
        QPointF begin; ///< in the pane
        int number;
        GeRectangle<int> before; ///< its place; empty for a pick that was not there
        bool isNew;              ///< it grows; otherwise it is moved
        bool hasGrown = false;
    };

    int findMark(QPointF const& place) const;
    QRectF findTag(Pick const& pick) const;
    void drawMark(QPainter& painter, Pick const& pick) const;
    void grow(QPointF const& place);
    void shift(QPointF const& place);
    void giveUp();
    void selectNext();
    void nudge(int dx, int dy, bool isSize);
    GeRectangle<int> keepWithin(GeRectangle<int> place) const;

    Picks& picks;
    PictureWidget& picture;
    std::optional<Drag> drag;
};
